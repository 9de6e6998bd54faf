// The one writer of the application's log file, and what a command that was run answers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velto::Helper {

/// The outcome of a command. Text that is no valid UTF-8 is empty.
struct Result {
    std::int32_t status = 0; ///< 0 is success
    std::string stdout;
    std::string stderr;
};

/// Appends "[" + ISO 8601 UTC time + "] " + `message` + line feed to AppPaths::logFile(). Opened and closed
/// once a line, appended with one write, so that lines stay whole however many threads and processes write.
/// A line that cannot be written is lost silently. Any thread but a real-time one.
void log(std::string_view message);

} // namespace velto::Helper
