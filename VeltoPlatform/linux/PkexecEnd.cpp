#include "VeltoPlatform/linux/PkexecEnd.h"

#include "VeltoPlatform/AdminRights.h"

#include <string_view>

namespace velto {
namespace {

// From pkexec's manual.
constexpr std::int32_t kDismissed = 126;
constexpr std::int32_t kNotAuthorized = 127;

/// The last line that says something.
std::string lastLine(std::string_view text) {
    const auto end = text.find_last_not_of(" \r\n");
    if (end == text.npos)
        return "it says nothing";
    text = text.substr(0, end + 1);
    return "it says \"" + std::string(text.substr(text.find_last_of('\n') + 1)) + '"';
}

} // namespace

PkexecEnd explainPkexec(std::int32_t exitStatus, const std::string& said) {
    const auto says = [&](std::string_view text) { return said.find(text) != said.npos; };
    const auto line = lastLine(said);
    if (exitStatus == kDismissed)
        return {AdminStatus::cancelled, "the request for administrator rights was dismissed"};
    if (exitStatus != kNotAuthorized)
        return {AdminStatus::failed,
                "pkexec ended with " + std::to_string(exitStatus) + " before the helper ran; " + line};
    if (says("No authentication agent found"))
        return {AdminStatus::nobodyToAsk, "nothing in this session can ask for a password; start a polkit "
                                          "authentication agent (the desktop's own, or lxpolkit)"};
    if (says("Error getting authority") || says("Error checking for authorization") ||
        says("Error enumerating actions"))
        return {AdminStatus::notAvailable, "polkit does not answer; is polkitd installed and the system bus "
                                           "running? About pkexec: " +
                                               line};
    if (says("must be setuid root"))
        return {AdminStatus::notAvailable, "pkexec may not become root here, as in some containers; " + line};
    if (says("Error accessing /") || says("Error executing /"))
        return {AdminStatus::noHelper,
                "the helper is out of reach for root, as on a drive of the user's own; "
                "install it; pkexec: " +
                    line};
    return {AdminStatus::denied, "administrator rights were denied; pkexec: " + line};
}

} // namespace velto
