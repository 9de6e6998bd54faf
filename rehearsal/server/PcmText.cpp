// Samples as base64, by OpenSSL: the client that is being rehearsed has a codec of its own.
#include "rehearsal/server/PcmText.h"

#include <openssl/evp.h>

#include <cstring>

namespace velto::rehearsal::PcmText {
namespace {

std::string encodeBytes(const unsigned char* bytes, std::size_t count) {
    std::string text((count + 2) / 3 * 4 + 1, '\0');
    const auto length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes, static_cast<int>(count));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace

std::string encode(std::span<const std::int16_t> samples) {
    return encodeBytes(reinterpret_cast<const unsigned char*>(samples.data()), samples.size_bytes());
}

std::optional<Samples> decode(std::string_view text) {
    if (text.size() % 4 != 0)
        return {};
    if (text.empty())
        return Samples{};
    std::string bytes(text.size() / 4 * 3, '\0');
    auto* const data = reinterpret_cast<unsigned char*>(bytes.data());
    if (EVP_DecodeBlock(data, reinterpret_cast<const unsigned char*>(text.data()),
                        static_cast<int>(text.size())) < 0)
        return {};
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    bytes.resize(bytes.size() - padding);
    // The decoder is lax (blanks, stray bits): only what encodes back to the same text was canonical.
    if (bytes.size() % 2 != 0 ||
        encodeBytes(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()) != text)
        return {};
    Samples samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    return samples;
}

} // namespace velto::rehearsal::PcmText
