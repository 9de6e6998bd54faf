#include "VeltoShared/audio/LoopbackProbe.h"

#include "VeltoShared/audio/AudioCapture.h"
#include "VeltoShared/audio/AudioPlayback.h"
#include "VeltoShared/core/Clock.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace velto::LoopbackProbe {
namespace {

constexpr double kFrequency = 1000;
constexpr double kAmplitude = 12'000;
constexpr std::uint32_t kChannels = 2;
/// For the tail of the tone to pass the devices.
constexpr double kTail = 0.5;

std::vector<std::int16_t> tone(double duration, double rate) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(duration * rate));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(
            kAmplitude * std::sin(2 * std::numbers::pi * kFrequency * static_cast<double>(i) / rate));
    return samples;
}

/// Filled on the real-time thread, read when the capture has gone.
struct Level {
    double squares = 0;
    int peak = 0;
    std::int64_t frames = 0;

    void add(std::span<const std::int16_t> samples) {
        for (const int sample : samples) {
            squares += static_cast<double>(sample) * sample;
            peak = std::max(peak, std::abs(sample));
        }
        frames += static_cast<std::int64_t>(samples.size());
    }
};

} // namespace

Result run(const std::string& outDevice, const std::string& inDevice, double duration, double rate) {
    const auto samples = tone(duration, rate);
    Level level;
    const auto capture = AudioCapture::open(
        inDevice, rate, kChannels, [&](std::span<const std::int16_t> captured) { level.add(captured); });
    const auto playback = capture ? AudioPlayback::open(outDevice, rate, kChannels) : nullptr;
    if (!playback)
        return {};
    capture->start();
    playback->start();
    playback->write(samples);
    Clock::shared().blockFor(
        std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(duration + kTail)));
    playback->stop();
    capture->stop();
    if (level.frames == 0)
        return {};
    const double mean = level.squares / static_cast<double>(level.frames);
    return {static_cast<std::int64_t>(std::sqrt(mean)), level.peak, level.frames};
}

} // namespace velto::LoopbackProbe
