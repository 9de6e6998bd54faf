// Recognises the running time of a call in a text that the phone app shows.
#pragma once

#include <string_view>

namespace velto {

/// Whether the text contains, as a word of its own, one to three digits, a colon and two digits (0:07, 12:45,
/// 105:00; not 12:345, a0:07): what the regular expression \b\d{1,3}:\d{2}\b finds, with the digits 0 to 9
/// and the word characters of every script.
bool showsCallTimer(std::string_view text);

} // namespace velto
