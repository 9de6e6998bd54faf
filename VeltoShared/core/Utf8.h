// UTF-8 as in RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF.
#pragma once

#include <string_view>

namespace velto {

bool isValidUtf8(std::string_view bytes);

} // namespace velto
