#include "VeltoShared/core/TextTrim.h"

namespace velto {
namespace {

std::string_view trim(std::string_view text, const char* characters) {
    const auto first = text.find_first_not_of(characters);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

} // namespace

std::string_view trimBlanks(std::string_view text) {
    return trim(text, " \t");
}
std::string_view trimBlanksAndNewlines(std::string_view text) {
    return trim(text, " \t\n\r\v\f");
}

} // namespace velto
