// Waits for what another process or thread brings about.
#pragma once

#include <chrono>
#include <string>
#include <thread>

namespace velto::test {

inline constexpr std::chrono::seconds kPatience{20};

/// Whether it becomes so in time; looks every 20 ms.
template <class Condition>
bool eventually(Condition isSo, std::chrono::milliseconds limit = kPatience) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

/// What a child process writes next: its lines without the last one's end. Does `meanwhile` as it waits.
template <class Process, class Work>
std::string nextLine(Process& process, Work meanwhile) {
    std::string text;
    eventually([&] {
        meanwhile();
        for (const auto& line : process.readLines())
            text += (text.empty() ? "" : "\n") + line;
        return !text.empty();
    });
    return text;
}

} // namespace velto::test
