// Letters of any script in UTF-8 texts: comparing without regard to case, and where words begin and end.
#pragma once

#include <string>
#include <string_view>

namespace velto {

/// Lower case by Unicode's one-to-one mapping, whatever the user's language; bytes that are not UTF-8 stay as
/// they are.
std::string lowerCased(std::string_view text);

bool equalIgnoringCase(std::string_view a, std::string_view b);

/// Whether the text begins or ends with a letter, a digit or a low line; false for the empty text.
bool beginsInWord(std::string_view text);
bool endsInWord(std::string_view text);

} // namespace velto
