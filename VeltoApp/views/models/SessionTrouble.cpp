#include "VeltoApp/views/models/SessionTrouble.h"

#include <ranges>
#include <string_view>

namespace velto {
namespace {

constexpr std::string_view kAgentError = "agent error: ";
constexpr std::string_view kInvalidNumber = "dial: invalid number ";

/// Instead of a start.
std::string refusal(std::string_view line) {
    if (line == "no API key")
        return "The call was not started: no API key is stored.";
    if (line == "Accessibility not granted")
        return "The call was not started: Velto is not allowed to use the phone app yet.";
    return {};
}

std::string failure(std::string_view line) {
    if (line.starts_with(kAgentError))
        return "The voice agent could not start: " + std::string(line.substr(kAgentError.size()));
    if (line.starts_with(kInvalidNumber))
        return "This number cannot be dialed. Write it without blanks, like +15551234567.";
    if (line == "dial failed (no line)")
        return "The phone app did not place the call.";
    if (line == "no call connected; stopping")
        return "No call was connected within 90 seconds.";
    return {};
}

} // namespace

std::string sessionTrouble(const std::vector<std::string>& log) {
    std::string first;
    for (const std::string_view line : log | std::views::reverse) {
        if (line.starts_with("session ") && line.ends_with(" starting"))
            break;
        if (auto refused = refusal(line); !refused.empty())
            return first.empty() ? refused : first;
        if (auto failed = failure(line); !failed.empty())
            first = std::move(failed);
    }
    return first;
}

} // namespace velto
