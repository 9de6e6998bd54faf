// The one writer of the application's log file.
#pragma once

#include <string_view>

namespace velto::Helper {

/// Appends "[" + ISO 8601 UTC time + "] " + `message` + line feed to AppPaths::logFile(). Opened and closed
/// once a line, appended with one write, so that lines stay whole however many threads and processes write.
/// A line that cannot be written is lost silently. Any thread but a real-time one.
void log(std::string_view message);

} // namespace velto::Helper
