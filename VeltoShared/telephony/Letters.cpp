// Letters by the C library's tables for the language-neutral UTF-8 locale, which needs no locale package.
#include "VeltoShared/telephony/Letters.h"

#include "VeltoShared/core/Utf8.h"

#include <clocale>
#include <cwctype>
#include <locale.h>

#include <algorithm>
#include <utility>

namespace velto {
namespace {

locale_t neutralLocale() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

/// The character at the start of the text and its length in bytes; length 0 when it is not UTF-8.
std::pair<char32_t, std::size_t> firstCharacter(std::string_view text) {
    const auto length = utf8CharacterLength(text);
    if (length == 0)
        return {0, 0};
    const auto lead = static_cast<unsigned char>(text.front());
    char32_t character = length == 1 ? lead : lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i)
        character = (character << 6u) | (static_cast<unsigned char>(text[i]) & 0x3Fu);
    return {character, length};
}

void append(std::string& text, char32_t character) {
    const auto byte = [&](char32_t bits) { text.push_back(static_cast<char>(bits)); };
    if (character < 0x80) {
        byte(character);
    } else if (character < 0x800) {
        byte(0xC0u | (character >> 6u));
        byte(0x80u | (character & 0x3Fu));
    } else if (character < 0x10000) {
        byte(0xE0u | (character >> 12u));
        byte(0x80u | ((character >> 6u) & 0x3Fu));
        byte(0x80u | (character & 0x3Fu));
    } else {
        byte(0xF0u | (character >> 18u));
        byte(0x80u | ((character >> 12u) & 0x3Fu));
        byte(0x80u | ((character >> 6u) & 0x3Fu));
        byte(0x80u | (character & 0x3Fu));
    }
}

} // namespace

std::string lowerCased(std::string_view text) {
    std::string lower;
    lower.reserve(text.size());
    while (!text.empty()) {
        const auto byte = text.front();
        if (static_cast<unsigned char>(byte) < 0x80) {
            lower.push_back(byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte);
            text.remove_prefix(1);
            continue;
        }
        const auto [character, length] = firstCharacter(text);
        if (length == 0 || !neutralLocale()) {
            lower.push_back(byte);
            text.remove_prefix(1);
            continue;
        }
        append(lower, static_cast<char32_t>(towlower_l(static_cast<wint_t>(character), neutralLocale())));
        text.remove_prefix(length);
    }
    return lower;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return a == b || lowerCased(a) == lowerCased(b);
}

bool beginsInWord(std::string_view text) {
    if (text.empty())
        return false;
    const auto [character, length] = firstCharacter(text);
    if (length == 1)
        return character == '_' || (character >= '0' && character <= '9') ||
               (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
    return length > 1 && neutralLocale() && iswalnum_l(static_cast<wint_t>(character), neutralLocale()) != 0;
}

bool endsInWord(std::string_view text) {
    for (std::size_t length = 1; length <= std::min<std::size_t>(4, text.size()); ++length) {
        const auto last = text.substr(text.size() - length);
        if ((static_cast<unsigned char>(last.front()) & 0xC0u) != 0x80)
            return firstCharacter(last).second == length && beginsInWord(last);
    }
    return false;
}

} // namespace velto
