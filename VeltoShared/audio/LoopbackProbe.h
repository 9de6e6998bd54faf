// Whether what is played into one device comes out of another.
#pragma once

#include <cstdint>
#include <string>

namespace velto::LoopbackProbe {

/// All zeros: nothing was captured, or a device is missing. A silent path has frames and no level.
struct Result {
    std::int64_t capturedRMS = 0;    ///< of the mono samples, cut to a whole number, 0 to 32767
    std::int64_t capturedPeak = 0;   ///< largest absolute value, 0 to 32768
    std::int64_t capturedFrames = 0; ///< mono samples

    bool operator==(const Result&) const = default;
};

/// Plays 1 kHz of amplitude 12 000 for `duration` seconds on one device, at `rate` Hz, and measures what the
/// other captures meanwhile and half a second longer. Blocks the calling thread for that time, but not when a
/// device is missing. `duration` times `rate` is a finite number, not below zero.
Result run(const std::string& outDevice, const std::string& inDevice, double duration, double rate);

} // namespace velto::LoopbackProbe
