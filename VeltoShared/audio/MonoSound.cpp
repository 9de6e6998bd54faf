#include "VeltoShared/audio/MonoSound.h"

#include <algorithm>

namespace velto {
namespace {

/// Samples of a result: a header that lies about its rate must not take the computer's memory.
constexpr double kLongest = 1U << 31;

} // namespace

std::optional<MonoSound> MonoSound::of(const WavFormat::Sound& sound, std::optional<double> targetRate) {
    const double rate = sound.rate();
    const auto frames = static_cast<double>(sound.frames());
    const bool isSame = !targetRate || *targetRate == rate || sound.frames() == 0;
    if (!isSame && (!(*targetRate > 0) || rate == 0))
        return std::nullopt;
    const double ratio = isSame ? 1 : *targetRate / rate;
    if (ratio * frames >= kLongest)
        return std::nullopt;
    return MonoSound(sound, isSame ? rate : *targetRate, ratio, static_cast<std::size_t>(ratio * frames));
}

bool MonoSound::read(std::size_t first, std::span<std::int16_t> out) {
    if (first > size_ || out.size() > size_ - first)
        return false;
    if (ratio_ != 1)
        return interpolate(first, out);
    for (std::size_t at = 0; at < out.size(); at += kBlock)
        if (!sound_.mono(first + at, out.subspan(at, std::min(kBlock, out.size() - at))))
            return false;
    return true;
}

bool MonoSound::interpolate(std::size_t first, std::span<std::int16_t> out) {
    // Signed, for which processors have quicker conversions.
    const auto last = static_cast<std::int64_t>(sound_.frames()) - 1;
    const double ratio = ratio_;
    std::int64_t begin = blockBegin_;
    std::int64_t end = blockEnd_;
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double position = static_cast<double>(static_cast<std::int64_t>(first + i)) / ratio;
        const auto before = std::min(static_cast<std::int64_t>(position), last);
        const auto after = std::min(before + 1, last);
        if (before < begin || after >= end) {
            begin = before;
            end = std::min(begin + static_cast<std::int64_t>(kBlock), last + 1);
            blockBegin_ = blockEnd_ = 0;
            const auto part = std::span(block_).first(static_cast<std::size_t>(end - begin));
            if (!sound_.mono(static_cast<std::uint64_t>(begin), part))
                return false;
            blockBegin_ = begin;
            blockEnd_ = end;
        }
        const double share = position - static_cast<double>(before);
        const double value = (1 - share) * block_[static_cast<std::size_t>(before - begin)] +
                             share * block_[static_cast<std::size_t>(after - begin)];
        out[i] = static_cast<std::int16_t>(std::clamp(value, -32768.0, 32767.0));
    }
    return true;
}

} // namespace velto
