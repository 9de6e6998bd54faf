// Reads JSON (RFC 8259) whose numbers come out correctly rounded.
#pragma once

#include <boost/json/value.hpp>

#include <optional>
#include <string_view>

namespace velto {

/// The JSON library rounds the last digit of some numbers wrongly, so that a number that was written would
/// not be the number that is read. Here each fractional number is the 64-bit float nearest to its text. None
/// when the text is not JSON.
std::optional<boost::json::value> parseExactJSON(std::string_view text);

} // namespace velto
