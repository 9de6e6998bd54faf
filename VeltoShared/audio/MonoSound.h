// Recorded sound as mono samples at a rate, read from any place in pieces.
#pragma once

#include "VeltoShared/audio/WavFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace velto {

/// Channels averaged; at another rate than the sound's by linear interpolation. Takes 8 KB. One thread at a
/// time.
class MonoSound {
  public:
    /// At the sound's own rate when no other is given, in Hz. None when it cannot be converted: a rate that
    /// is not above zero, or a result of 2³¹ samples or more. The sound's source must outlive this.
    static std::optional<MonoSound> of(const WavFormat::Sound& sound, std::optional<double> targetRate);

    double rate() const { return rate_; }
    std::size_t size() const { return size_; } ///< samples
    /// The samples from `first` on. False when they are not there, or cannot be read any more. Blocks
    /// where the source does.
    bool read(std::size_t first, std::span<std::int16_t> out);

  private:
    static constexpr std::size_t kBlock = 4096; ///< frames

    MonoSound(const WavFormat::Sound& sound, double rate, double ratio, std::size_t size)
        : sound_(sound), rate_(rate), ratio_(ratio), size_(size) {}
    bool interpolate(std::size_t first, std::span<std::int16_t> out);

    WavFormat::Sound sound_;
    double rate_;
    double ratio_; ///< of the rate to the sound's
    std::size_t size_;
    std::array<std::int16_t, kBlock> block_{};
    std::int64_t blockBegin_ = 0; ///< frame
    std::int64_t blockEnd_ = 0;   ///< behind its last
};

} // namespace velto
