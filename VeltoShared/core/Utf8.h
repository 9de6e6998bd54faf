// UTF-8 as in RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF.
#pragma once

#include <string>
#include <string_view>

namespace velto {

bool isValidUtf8(std::string_view bytes);
/// The same text with U+FFFD in the place of each byte that belongs to no valid sequence.
std::string repairedUtf8(std::string_view bytes);

} // namespace velto
