// Waits for what another process or thread brings about.
#pragma once

#include <chrono>
#include <thread>

namespace velto::test {

/// Whether it becomes so before twenty seconds are over; looks every 5 ms.
template <class Condition>
bool eventually(Condition isSo) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace velto::test
