// Straight from the file to the result, a block at a time: no copy of the file or of its mono sound.
#include "VeltoShared/audio/Wav.h"

#include "VeltoShared/audio/FileBytes.h"

#include <algorithm>
#include <array>
#include <new>

namespace velto::Wav {
namespace {

/// Samples of a result: a header that lies about its rate must not take the computer's memory.
constexpr double kLongest = 1U << 31;

constexpr std::size_t kBlock = 4096; ///< frames

/// None when the sound cannot be read to its end.
using Samples = std::optional<std::vector<std::int16_t>>;

Samples mono(const WavFormat::Sound& sound) {
    std::vector<std::int16_t> samples(sound.frames());
    for (std::size_t first = 0; first < samples.size(); first += kBlock) {
        const auto block = std::span(samples).subspan(first, std::min(kBlock, samples.size() - first));
        if (!sound.mono(first, block))
            return std::nullopt;
    }
    return samples;
}

/// Linear interpolation, a block of mono samples after the other.
Samples converted(const WavFormat::Sound& sound, double ratio) {
    // Signed, for which processors have quicker conversions.
    const auto last = static_cast<std::int64_t>(sound.frames()) - 1;
    std::vector<std::int16_t> samples(static_cast<std::size_t>(ratio * static_cast<double>(sound.frames())));
    std::array<std::int16_t, kBlock> block{};
    std::int64_t first = 0; // frame at the block's begin
    std::int64_t end = 0;   // behind its last
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double position = static_cast<double>(static_cast<std::int64_t>(i)) / ratio;
        const auto before = std::min(static_cast<std::int64_t>(position), last);
        const auto after = std::min(before + 1, last);
        if (after >= end) {
            first = before;
            end = std::min(first + static_cast<std::int64_t>(kBlock), last + 1);
            const auto part = std::span(block).first(static_cast<std::size_t>(end - first));
            if (!sound.mono(static_cast<std::uint64_t>(first), part))
                return std::nullopt;
        }
        const double share = position - static_cast<double>(before);
        const double value = (1 - share) * block[static_cast<std::size_t>(before - first)] +
                             share * block[static_cast<std::size_t>(after - first)];
        samples[i] = static_cast<std::int16_t>(std::clamp(value, -32768.0, 32767.0));
    }
    return samples;
}

} // namespace

std::optional<Sound> toMono16(const WavFormat::Sound& sound, std::optional<double> targetRate) {
    const double rate = sound.rate();
    const bool isSame = !targetRate || *targetRate == rate || sound.frames() == 0;
    if (!isSame && (!(*targetRate > 0) || rate == 0))
        return std::nullopt;
    const double ratio = isSame ? 1 : *targetRate / rate;
    if (ratio * static_cast<double>(sound.frames()) >= kLongest)
        return std::nullopt;
    auto samples = isSame ? mono(sound) : converted(sound, ratio);
    if (!samples)
        return std::nullopt;
    return Sound{isSame ? rate : *targetRate, std::move(*samples)};
}

std::optional<Sound> readMono16(const std::filesystem::path& url, std::optional<double> targetRate) {
    try {
        FileBytes file(url);
        const auto sound = WavFormat::find(file);
        return sound ? toMono16(*sound, targetRate) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace velto::Wav
