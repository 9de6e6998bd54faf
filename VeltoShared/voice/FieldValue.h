// What may stand in the header field of a request.
#pragma once

#include <string_view>

namespace velto {

/// RFC 9110, section 5.5: anything else could end the field and begin another.
bool isFieldValue(std::string_view value);

} // namespace velto
