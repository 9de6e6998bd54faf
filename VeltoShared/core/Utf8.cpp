// Checked by blocks of ASCII first: a provider's audio is nothing else.
#include "VeltoShared/core/Utf8.h"

#include <cstdint>
#include <cstring>

namespace velto {
namespace {

struct Sequence {
    std::size_t length; ///< of the character, or of the maximal broken part
    bool isWellFormed;
};

Sequence sequenceAt(std::string_view bytes) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char first = at(0);
    if (first < 0x80)
        return {1, true};
    if (first < 0xC2 || first > 0xF4)
        return {1, false};
    const std::size_t following = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    unsigned char lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned char highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    for (std::size_t i = 1; i <= following; ++i) {
        if (i >= bytes.size() || at(i) < lowest || at(i) > highest)
            return {i, false};
        lowest = 0x80;
        highest = 0xBF;
    }
    return {following + 1, true};
}

std::size_t asciiPrefix(std::string_view bytes) {
    constexpr std::size_t kBlock = 64;
    std::size_t at = 0;
    for (; at + kBlock <= bytes.size(); at += kBlock) {
        std::uint64_t words[kBlock / 8];
        std::memcpy(words, bytes.data() + at, kBlock);
        std::uint64_t all = 0;
        for (const std::uint64_t word : words)
            all |= word;
        if (all & 0x8080808080808080u)
            break;
    }
    while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80)
        ++at;
    return at;
}

/// Bytes before the first broken part.
std::size_t wellFormedPrefix(std::string_view bytes) {
    std::size_t at = 0;
    while ((at += asciiPrefix(bytes.substr(at))) < bytes.size()) {
        const Sequence sequence = sequenceAt(bytes.substr(at));
        if (!sequence.isWellFormed)
            break;
        at += sequence.length;
    }
    return at;
}

} // namespace

std::size_t utf8CharacterLength(std::string_view bytes) {
    if (bytes.empty())
        return 0;
    const Sequence sequence = sequenceAt(bytes);
    return sequence.isWellFormed ? sequence.length : 0;
}

bool isValidUtf8(std::string_view bytes) {
    return wellFormedPrefix(bytes) == bytes.size();
}

std::string repairedUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (;;) {
        const std::size_t good = wellFormedPrefix(bytes);
        text.append(bytes.substr(0, good));
        bytes.remove_prefix(good);
        if (bytes.empty())
            return text;
        text.append("\xEF\xBF\xBD");
        bytes.remove_prefix(sequenceAt(bytes).length);
    }
}

} // namespace velto
