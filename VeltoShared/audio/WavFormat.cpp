#include "VeltoShared/audio/WavFormat.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace velto::WavFormat {
namespace {

constexpr std::size_t kFirstChunk = 12;
constexpr std::size_t kChunkHeader = 8;
constexpr std::size_t kFormatSize = 16;
constexpr std::uint16_t kIntegerPCM = 1;

std::uint16_t read16(std::span<const std::byte> bytes, std::size_t at) {
    return static_cast<std::uint16_t>(std::to_integer<unsigned>(bytes[at]) |
                                      std::to_integer<unsigned>(bytes[at + 1]) << 8);
}

std::uint32_t read32(std::span<const std::byte> bytes, std::size_t at) {
    return read16(bytes, at) | static_cast<std::uint32_t>(read16(bytes, at + 2)) << 16;
}

bool reads(std::span<const std::byte> bytes, std::size_t at, std::string_view text) {
    return std::memcmp(bytes.data() + at, text.data(), text.size()) == 0;
}

/// Writes little-endian numbers and texts one after the other.
class Writer {
  public:
    explicit Writer(Header& to) : to_(to) {}
    Writer& text(std::string_view four) {
        std::memcpy(to_.data() + at_, four.data(), four.size());
        at_ += four.size();
        return *this;
    }
    Writer& number(std::uint32_t value, std::size_t bytes) {
        for (std::size_t i = 0; i < bytes; ++i)
            to_[at_++] = static_cast<std::byte>(value >> (8 * i));
        return *this;
    }

  private:
    Header& to_;
    std::size_t at_ = 0;
};

} // namespace

Header header(std::uint32_t frames, double rate) {
    const auto wholeRate = static_cast<std::uint32_t>(rate);
    Header bytes;
    Writer writer(bytes);
    writer.text("RIFF").number(frames * 2 + 36, 4).text("WAVE");
    writer.text("fmt ").number(kFormatSize, 4).number(kIntegerPCM, 2).number(1, 2);
    writer.number(wholeRate, 4).number(wholeRate * 2, 4).number(2, 2).number(16, 2);
    writer.text("data").number(frames * 2, 4);
    return bytes;
}

std::int16_t Sound::mono(std::size_t frame) const {
    const std::size_t first = frame * 2 * channels;
    std::int32_t sum = 0;
    for (std::size_t channel = 0; channel < channels; ++channel)
        sum += static_cast<std::int16_t>(read16(data, first + 2 * channel));
    return static_cast<std::int16_t>(sum / static_cast<std::int32_t>(channels));
}

std::optional<Sound> find(std::span<const std::byte> file) {
    if (file.size() <= headerSize || !reads(file, 0, "RIFF") || !reads(file, 8, "WAVE"))
        return std::nullopt;
    Sound sound;
    sound.rate = 16'000;
    std::uint16_t format = kIntegerPCM;
    std::uint16_t bits = 16;
    std::optional<std::span<const std::byte>> data;
    for (std::size_t at = kFirstChunk; at + kChunkHeader <= file.size();) {
        const std::size_t size = read32(file, at + 4);
        const std::size_t body = at + kChunkHeader;
        if (reads(file, at, "fmt ") && body + kFormatSize <= file.size()) {
            format = read16(file, body);
            sound.channels = read16(file, body + 2);
            sound.rate = read32(file, body + 4);
            bits = read16(file, body + 14);
        } else if (reads(file, at, "data")) {
            data = file.subspan(body, std::min(size, file.size() - body));
        }
        at = body + size + size % 2;
    }
    if (!data || format != kIntegerPCM || bits != 16)
        return std::nullopt;
    sound.channels = std::max(sound.channels, 1u);
    sound.data = *data;
    sound.data = sound.data.first(sound.frames() * 2 * sound.channels);
    return sound;
}

} // namespace velto::WavFormat
