// Reports as lines on standard output.
#include "rehearsal/process/Reports.h"

#include <boost/json/serialize.hpp>

#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace velto::rehearsal {

void reportToStandardOutput(const boost::json::object& report) {
    static std::mutex mutex;
    const auto line = boost::json::serialize(report) + "\n";
    const std::lock_guard lock(mutex);
    for (std::string_view rest = line; !rest.empty();) {
        const auto count = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return;
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::chrono::nanoseconds monotonicNow() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace velto::rehearsal
