// Reports as lines on standard output.
#include "rehearsal/process/Reports.h"

#include "VeltoPlatform/FileDescriptor.h"

#include <boost/json/serialize.hpp>

#include <unistd.h>

namespace velto::rehearsal {

void reportToStandardOutput(const boost::json::object& report) {
    static std::mutex mutex;
    const auto line = boost::json::serialize(report) + "\n";
    const std::lock_guard lock(mutex);
    writeAll(STDOUT_FILENO, line);
}

std::chrono::nanoseconds monotonicNow() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace velto::rehearsal
