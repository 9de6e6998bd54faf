// UTF-8 (RFC 3629) that may be broken: a binary frame promises nothing about its bytes.
#pragma once

#include <string>
#include <string_view>

namespace velto::Utf8 {

bool isWellFormed(std::string_view bytes);
/// The text with U+FFFD for every maximal broken part (The Unicode Standard, section 3.9).
std::string repaired(std::string_view bytes);

} // namespace velto::Utf8
