// The bytes of a WAV file: the header that recordings get, and what a reader finds in any other.
// Format: RIFF/WAVE, "Multimedia Programming Interface and Data Specifications 1.0", 1991.
#pragma once

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

/// 16-bit integer PCM inside a file's bytes.
struct Sound {
    std::span<const std::byte> data; ///< whole frames
    std::uint32_t channels = 1;      ///< at least one
    std::uint32_t rate = 0;          ///< Hz; a file may say 0

    std::size_t frames() const { return data.size() / (std::size_t{2} * channels); }
    /// The mean of a frame's channels, cut towards zero.
    std::int16_t mono(std::size_t frame) const;
};

/// None when the bytes are no such file. Sizes that lie are cut at the end of the bytes; unknown chunks are
/// skipped; of two chunks of one kind the later counts.
std::optional<Sound> find(std::span<const std::byte> file);

} // namespace velto::WavFormat
