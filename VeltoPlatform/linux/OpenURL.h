// Opens a URL with its registered application.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace velto {

inline constexpr std::chrono::milliseconds kToOpenURL{400};

/// Starts the default handler of the URL's scheme (for "file:" of the file's type) and hands it the URL as
/// one argument, letter for letter, without a shell in between. False when there is no handler, its program
/// is not there or not executable, or it was not started within the limit; then it is not started later
/// either. Needs no display and no session bus, but fails on a bus that does not answer. The program runs in
/// a session of its own, without our descriptors and with nothing blocked, and is not our child. A
/// program that only hands the URL to one that is running is waited for, up to 150 ms of the limit, so that
/// the latter shows this URL when the answer comes. Any thread.
bool openURL(const std::string& url, std::chrono::milliseconds limit = kToOpenURL);

/// As `Workspace::handlerOf`.
std::optional<std::string> handlerOf(const std::string& scheme);

} // namespace velto
