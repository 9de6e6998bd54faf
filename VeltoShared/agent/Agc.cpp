#include "VeltoShared/agent/Agc.h"

#include <algorithm>
#include <cmath>

namespace velto {
namespace {

constexpr double kNoiseFloor = 0.0015;
constexpr double kKept = 0.6;

double rms(std::span<const std::int16_t> samples) {
    // Exact in 64-bit integers, and so in 64-bit floats for any chunk below 8 million samples.
    std::int64_t sum = 0;
    for (const std::int64_t sample : samples)
        sum += sample * sample;
    return std::sqrt(static_cast<double>(sum) / static_cast<double>(samples.size())) / 32768.0;
}

} // namespace

void process(std::span<std::int16_t> samples, Agc& agc) {
    if (samples.empty())
        return;
    double gain = agc.gain.load(std::memory_order_relaxed);
    if (const double level = rms(samples); level > kNoiseFloor) {
        const double desired = std::clamp(agc.target / level, agc.minGain, agc.maxGain);
        gain = kKept * gain + (1 - kKept) * desired;
        agc.gain.store(gain, std::memory_order_relaxed);
    }
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(
            static_cast<std::int32_t>(std::clamp(sample * gain, -32768.0, 32767.0)));
}

} // namespace velto
