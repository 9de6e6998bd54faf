// UTF-8 as in RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velto {

bool isValidUtf8(std::string_view bytes);
/// The same text with U+FFFD for every maximal broken part (The Unicode Standard, section 3.9).
std::string repairedUtf8(std::string_view bytes);
/// Length in bytes of the character at the start; 0 when there is no valid one.
std::size_t utf8CharacterLength(std::string_view bytes);

} // namespace velto
