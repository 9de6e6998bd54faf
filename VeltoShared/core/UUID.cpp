// Text form of identifiers and where random ones come from.
#include "VeltoShared/core/UUID.h"

#include <cstring>
#include <random>

namespace velto {
namespace {

constexpr std::size_t kTextLength = 36;

bool isHyphenAt(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

int hexadecimal(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return -1;
}

} // namespace

UUID UUID::random() {
    std::random_device source;
    UUID id;
    for (std::size_t i = 0; i < id.bytes.size(); i += 4) {
        const std::uint32_t word = source();
        std::memcpy(&id.bytes[i], &word, sizeof word);
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0Fu) | 0x40u);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3Fu) | 0x80u);
    return id;
}

std::optional<UUID> UUID::parse(std::string_view text) {
    if (text.size() != kTextLength)
        return std::nullopt;
    UUID id;
    std::size_t nibble = 0;
    for (std::size_t i = 0; i < kTextLength; ++i) {
        if (isHyphenAt(i)) {
            if (text[i] != '-')
                return std::nullopt;
            continue;
        }
        const int digit = hexadecimal(text[i]);
        if (digit < 0)
            return std::nullopt;
        auto& byte = id.bytes[nibble++ / 2];
        byte = static_cast<std::uint8_t>((byte << 4) | digit);
    }
    return id;
}

std::string UUID::text() const {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    text.reserve(kTextLength);
    for (const auto byte : bytes) {
        if (isHyphenAt(text.size()))
            text.push_back('-');
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 0x0F]);
    }
    return text;
}

} // namespace velto

std::size_t std::hash<velto::UUID>::operator()(const velto::UUID& id) const noexcept {
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(id.bytes.data()), id.bytes.size()});
}
