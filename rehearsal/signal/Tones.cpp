// Sines and silence at the end of a run of samples, and how loud a run is.
#include "rehearsal/signal/Tones.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace velto::rehearsal {
namespace {

constexpr double kFullScale = 32768;
constexpr Milliseconds kRamp{5};

std::int16_t limited(double value) {
    return static_cast<std::int16_t>(std::lround(std::clamp(value, -kFullScale, kFullScale - 1)));
}

} // namespace

std::size_t frameCount(Milliseconds duration, double rate) {
    return static_cast<std::size_t>(static_cast<double>(duration.count()) * rate / 1000);
}

void appendSilence(Samples& samples, Milliseconds duration, double rate) {
    samples.resize(samples.size() + frameCount(duration, rate));
}

void appendTones(Samples& samples, std::span<const double> frequencies, double amplitude,
                 Milliseconds duration, double rate) {
    const auto frames = frameCount(duration, rate);
    const auto ramp = static_cast<double>(frameCount(kRamp, rate));
    samples.reserve(samples.size() + frames);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        double sum = 0;
        for (const auto frequency : frequencies)
            sum += std::sin(2 * std::numbers::pi * frequency * static_cast<double>(frame) / rate);
        const auto toEdge = static_cast<double>(std::min(frame, frames - 1 - frame));
        samples.push_back(limited(sum * amplitude * std::min(1.0, toEdge / ramp)));
    }
}

int peak(std::span<const std::int16_t> samples) {
    int highest = 0;
    for (const auto sample : samples)
        highest = std::max(highest, std::abs(static_cast<int>(sample)));
    return highest;
}

double loudness(std::span<const std::int16_t> samples) {
    if (samples.empty())
        return 0;
    double sum = 0;
    for (const auto sample : samples)
        sum += static_cast<double>(sample) * sample;
    return std::sqrt(sum / static_cast<double>(samples.size())) / kFullScale;
}

void scale(std::span<std::int16_t> samples, double factor) {
    for (auto& sample : samples)
        sample = limited(sample * factor);
}

} // namespace velto::rehearsal
