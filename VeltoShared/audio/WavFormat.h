// The bytes of a WAV file: the header that recordings get, and what a reader finds in any other.
// Format: RIFF/WAVE, "Multimedia Programming Interface and Data Specifications 1.0", 1991.
#pragma once

#include "VeltoShared/audio/ByteSource.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace velto::WavFormat {

inline constexpr std::size_t headerSize = 44;
using Header = std::array<std::byte, headerSize>;

/// Of a mono file of 16-bit samples. `rate` in Hz, cut to a whole number; above zero and below 2³¹.
Header header(std::uint32_t frames, double rate);

/// 16-bit integer PCM inside a file.
class Sound {
  public:
    Sound(ByteSource& source, std::uint64_t offset, std::uint64_t size, std::uint32_t channels,
          std::uint32_t rate)
        : source_(&source), offset_(offset), channels_(channels), rate_(rate),
          frames_(size / (std::uint64_t{2} * channels)) {}

    std::uint32_t channels() const { return channels_; } ///< at least one
    std::uint32_t rate() const { return rate_; }         ///< Hz; a file may say 0
    std::uint64_t frames() const { return frames_; }
    /// The means of a run of frames' channels, cut towards zero, from the frame `first` on. False when they
    /// cannot be read any more.
    bool mono(std::uint64_t first, std::span<std::int16_t> out) const;

  private:
    ByteSource* source_;
    std::uint64_t offset_;
    std::uint32_t channels_;
    std::uint32_t rate_;
    std::uint64_t frames_;
};

/// None when it is no such file. Sizes that lie are cut at the end of the bytes; unknown chunks are skipped;
/// of two chunks of one kind the later counts. The source must outlive the sound.
std::optional<Sound> find(ByteSource& file);

} // namespace velto::WavFormat
