#include "VeltoApp/views/models/SessionTrouble.h"

#include <array>
#include <ranges>
#include <string_view>
#include <utility>

namespace velto {
namespace {

constexpr std::string_view kAgentError = "agent error: ";

constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kSentences{{
    {"no API key", "The call was not started: no API key is stored."},
    {"Accessibility not granted", "The call was not started: Velto may not use the phone app yet."},
    {"dial failed (no line)", "The phone app did not place the call."},
    {"no call connected; stopping", "No call was connected within 90 seconds."},
}};

bool isStart(std::string_view line) {
    return line.starts_with("session ") && line.ends_with(" starting");
}

} // namespace

std::string sessionTrouble(const std::vector<std::string>& log) {
    for (const std::string_view line : log | std::views::reverse) {
        if (isStart(line))
            break;
        if (line.starts_with(kAgentError))
            return "The voice agent could not start: " + std::string(line.substr(kAgentError.size()));
        for (const auto& [words, sentence] : kSentences)
            if (line == words)
                return std::string(sentence);
    }
    return {};
}

} // namespace velto
