// Automatic gain control of the callee's voice, one step a chunk.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>

namespace velto {

/// Owned by one caller of `process`; `gain` may be read from any thread.
struct Agc {
    std::atomic<double> gain = 32.0; ///< linear factor
    double target = 0.15;            ///< wanted RMS, full scale 1.0
    double minGain = 1.0;
    double maxGain = 80.0;
};

/// Moves the gain 40 % of the way to what would bring the chunk's RMS to the target (held below an RMS of
/// 0.0015), then scales the samples in place, clipped to 16 bits and truncated toward zero. An empty chunk
/// changes nothing. Allocates nothing.
void process(std::span<std::int16_t> samples, Agc& agc);

} // namespace velto
