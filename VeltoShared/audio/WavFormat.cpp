#include "VeltoShared/audio/WavFormat.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>
#include <utility>

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

bool Sound::mono(std::uint64_t first, std::span<std::int16_t> out) const {
    const std::uint64_t frameBytes = std::uint64_t{2} * channels_;
    const auto bytes = source_->bytes(offset_ + first * frameBytes, out.size() * frameBytes);
    if (bytes.size() < out.size() * frameBytes)
        return false;
    static_assert(std::endian::native == std::endian::little, "samples lie in memory as in the file");
    const auto sampleAt = [from = bytes.data()](std::size_t i) {
        std::int16_t sample = 0;
        std::memcpy(&sample, from + 2 * i, sizeof sample);
        return sample;
    };
    // The usual ones by themselves, for the compiler to work on many at once.
    if (channels_ == 1) {
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = sampleAt(i);
    } else if (channels_ == 2) {
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = static_cast<std::int16_t>((sampleAt(2 * i) + sampleAt(2 * i + 1)) / 2);
    } else {
        for (std::size_t i = 0; i < out.size(); ++i) {
            std::int32_t sum = 0;
            for (std::size_t channel = 0; channel < channels_; ++channel)
                sum += sampleAt(i * channels_ + channel);
            out[i] = static_cast<std::int16_t>(sum / static_cast<std::int32_t>(channels_));
        }
    }
    return true;
}

std::optional<Sound> find(ByteSource& file) {
    const auto begin = file.bytes(0, kFirstChunk);
    if (file.size() <= headerSize || begin.size() < kFirstChunk || !reads(begin, 0, "RIFF") ||
        !reads(begin, 8, "WAVE"))
        return std::nullopt;
    std::uint32_t channels = 1;
    std::uint32_t rate = 16'000;
    std::uint16_t format = kIntegerPCM;
    std::uint16_t bits = 16;
    std::optional<std::pair<std::uint64_t, std::uint64_t>> data; // offset and size
    for (std::uint64_t at = kFirstChunk;;) {
        const auto chunk = file.bytes(at, kChunkHeader + kFormatSize);
        if (chunk.size() < kChunkHeader)
            break;
        const std::uint64_t size = read32(chunk, 4);
        const std::uint64_t body = at + kChunkHeader;
        if (reads(chunk, 0, "fmt ") && chunk.size() == kChunkHeader + kFormatSize) {
            format = read16(chunk, kChunkHeader);
            channels = read16(chunk, kChunkHeader + 2);
            rate = read32(chunk, kChunkHeader + 4);
            bits = read16(chunk, kChunkHeader + 14);
        } else if (reads(chunk, 0, "data")) {
            data.emplace(body, std::min(size, file.size() - body));
        }
        at = body + size + size % 2;
    }
    if (!data || format != kIntegerPCM || bits != 16)
        return std::nullopt;
    return Sound(file, data->first, data->second, std::max(channels, 1u), rate);
}

} // namespace velto::WavFormat
