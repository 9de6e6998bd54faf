// Times, durations and hashes of call records.
#include "VeltoApp/history/CallRecord.h"

#include <algorithm>
#include <cmath>

namespace velto {

using SystemClock = std::chrono::system_clock;

CallRecord::Time CallRecord::Time::of(SystemClock::time_point time) {
    const std::chrono::duration<double> seconds =
        time.time_since_epoch() - std::chrono::seconds(static_cast<long>(kReferenceAfterUnixEpoch));
    return {seconds.count()};
}

SystemClock::time_point CallRecord::Time::timePoint() const {
    // A little inside of what nanoseconds in 64 bits reach, about the years 1678 to 2261.
    constexpr double kLimit = 9.2e9;
    const double seconds = std::isnan(sinceReference)
                               ? 0
                               : std::clamp(sinceReference, -kLimit, kLimit - kReferenceAfterUnixEpoch);
    // Apart, because a whole number of nanoseconds since 1970 is beyond a float's exact ones.
    const double whole = std::floor(seconds);
    return SystemClock::time_point(std::chrono::seconds(std::llround(whole + kReferenceAfterUnixEpoch)) +
                                   std::chrono::nanoseconds(std::llround((seconds - whole) * 1e9)));
}

std::string CallRecord::durationText() const {
    const auto seconds = std::llround(duration);
    const auto rest = std::to_string(seconds % 60);
    return std::to_string(seconds / 60) + ':' + (rest.size() < 2 ? "0" : "") + rest;
}

} // namespace velto

std::size_t std::hash<velto::CallRecord>::operator()(const velto::CallRecord& record) const noexcept {
    std::size_t all = 0;
    const auto mix = [&](std::size_t one) { all ^= one + 0x9E3779B97F4A7C15u + (all << 6u) + (all >> 2u); };
    mix(std::hash<velto::UUID>()(record.id));
    mix(std::hash<std::string>()(record.number));
    mix(std::hash<double>()(record.started.sinceReference));
    mix(std::hash<double>()(record.duration));
    mix(std::hash<std::string>()(record.transcript));
    mix(std::hash<std::optional<std::string>>()(record.recordingPath));
    return all;
}
