// Trimming as the system does it: ASCII characters only, from both ends.
#pragma once

#include <string_view>

namespace velto {

/// Blanks: spaces and tabs.
std::string_view trimBlanks(std::string_view text);
/// Spaces, tabs and line ends.
std::string_view trimBlanksAndNewlines(std::string_view text);

} // namespace velto
