// Audio inside messages: base64 both ways, in place.
#pragma once

#include "VeltoShared/voice/Base64.h"
#include "VeltoShared/voice/VoiceSession.h"

#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velto {

/// Standard base64 (RFC 4648, padded) of 16-bit PCM; none for any other text.
inline std::optional<AudioChunk> decodedAudio(std::string_view base64) {
    AudioChunk chunk(Base64::decodedSize(base64));
    if (!Base64::decode(base64, chunk.bytes()))
        return std::nullopt;
    return chunk;
}

/// A message that is the same for every chunk except for its middle: fixed prefix, written in place, fixed
/// suffix, in one buffer that only grows.
class AudioMessage {
  public:
    AudioMessage(std::string_view prefix, std::string_view suffix)
        : buffer_(prefix), prefix_(prefix.size()), suffix_(suffix) {}

    /// Valid until the next call.
    std::string_view build(std::span<const std::byte> pcm) {
        const std::size_t size = prefix_ + Base64::encodedSize(pcm.size()) + suffix_.size();
        if (buffer_.size() < size)
            buffer_.resize(size);
        char* const data = buffer_.data() + prefix_;
        std::memcpy(data + Base64::encode(pcm, data), suffix_.data(), suffix_.size());
        return std::string_view(buffer_).substr(0, size);
    }

  private:
    std::string buffer_;
    std::size_t prefix_;
    std::string_view suffix_; ///< a literal
};

} // namespace velto
