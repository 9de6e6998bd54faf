// Text that a shell takes literally.
#pragma once

#include <string>
#include <string_view>

namespace velto {

/// One word for /bin/sh that stands for `text`, which holds no NUL: as it is if it has nothing but letters,
/// digits and "/._+-:,@%" in it, else in single quotes.
std::string shellWord(std::string_view text);

} // namespace velto
