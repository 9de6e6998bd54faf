// Which texts are phone numbers.
#pragma once

#include "VeltoShared/core/Result.h"

#include <string>
#include <string_view>

namespace velto::phone {

/// What a person or another program has given as a number, without its scheme and percent-encoding, and with
/// plain blanks and dashes for those that texts and web pages put there; their marks of direction go.
std::string plainNumberText(std::string_view text);

/// What to dial, out of what a person typed or a desktop opened: NUMBER, tel:NUMBER or tel-phoneapp:NUMBER,
/// with or without percent-encoding and the blanks, dots, dashes and brackets that people write. The answer
/// has only digits, "*", "#" and "+", the last at the start or behind a "*" or "#", at least one digit and at
/// most 40 characters. A failure's description says "Not a phone number: …", fit to be shown: short, and
/// UTF-8 without control characters.
Result<std::string> phoneNumber(std::string_view text);

} // namespace velto::phone
