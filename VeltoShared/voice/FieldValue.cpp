#include "VeltoShared/voice/FieldValue.h"

#include <algorithm>

namespace velto {

bool isFieldValue(std::string_view value) {
    return std::ranges::none_of(
        value, [](char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F; });
}

} // namespace velto
