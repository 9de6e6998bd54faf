// What a program that did not start has to say for itself.
#pragma once

#include "rehearsal/process/ChildProcess.h"

#include <filesystem>
#include <optional>
#include <string>

namespace velto::rehearsal {

/// To be appended to "… did not start": a question when the program could not be executed, otherwise the last
/// five lines of its log, which is gone when somebody reads the message. Empty when there are none.
std::string whyNotStarted(ChildProcess& process, const std::filesystem::path& log);
/// Without a process the log alone counts.
std::string whyNotStarted(std::optional<ChildProcess>& process, const std::filesystem::path& log);

} // namespace velto::rehearsal
