#include "VeltoApp/app/Helper.h"

#include "VeltoPlatform/FileDescriptor.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/ISO8601.h"

#include <fcntl.h>

#include <string>

namespace velto::Helper {
namespace {

/// What is said on a call is nobody else's business, so the log is its user's alone.
constexpr mode_t kLogMode = 0600;

} // namespace

void log(std::string_view message) {
    std::string line;
    line.reserve(message.size() + 32);
    line += '[';
    line += iso8601(Clock::shared().now());
    line += "] ";
    line += message;
    line += '\n';

    const FileDescriptor file(
        ::open(AppPaths::logFile().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kLogMode));
    if (file)
        writeAll(file.get(), line);
}

} // namespace velto::Helper
