#include "VeltoPhone/model/PhoneNumber.h"

#include "VeltoShared/core/Utf8.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <charconv>

namespace velto::phone {
namespace {

constexpr std::size_t kLongest = 40;   ///< characters of a number
constexpr std::size_t kMostShown = 32; ///< bytes of what is none
constexpr std::string_view kSeparators = " \t-./()";

std::string_view withoutScheme(std::string_view text) {
    for (const std::string_view scheme : {"tel-phoneapp:", "tel:"})
        if (boost::algorithm::istarts_with(text, scheme)) {
            text.remove_prefix(scheme.size());
            return text.starts_with("//") ? text.substr(2) : text;
        }
    return text;
}

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const auto* const digits = text.data() + i + 1;
        if (text[i] == '%' && text.size() - i > 2 &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            decoded.push_back(static_cast<char>(byte));
            i += 2;
        } else {
            decoded.push_back(text[i]);
        }
    }
    return decoded;
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isNumber(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char before = i == 0 ? '*' : text[i - 1];
        const bool plus = text[i] == '+' && (before == '*' || before == '#');
        if (!isDigit(text[i]) && text[i] != '*' && text[i] != '#' && !plus)
            return false;
    }
    return text.size() <= kLongest && std::any_of(text.begin(), text.end(), isDigit);
}

std::string shown(std::string_view text) {
    if (text.empty())
        return "nothing was given";
    std::string line;
    const auto valid = repairedUtf8(text.substr(0, 4 * kMostShown));
    for (std::string_view rest = valid; !rest.empty();) {
        const auto length = utf8CharacterLength(rest);
        if (line.size() + length > kMostShown)
            return line + "…";
        const auto control = static_cast<unsigned char>(rest[0]) < ' ' || rest[0] == '\x7f';
        line += control ? std::string_view(" ") : rest.substr(0, length);
        rest.remove_prefix(length);
    }
    return line;
}

} // namespace

Result<std::string> phoneNumber(std::string_view text) {
    const auto given = percentDecoded(withoutScheme(text));
    std::string number;
    std::copy_if(given.begin(), given.end(), std::back_inserter(number),
                 [](char character) { return kSeparators.find(character) == std::string_view::npos; });
    if (isNumber(number))
        return number;
    return Failure{.description = "Not a phone number: " + shown(given)};
}

} // namespace velto::phone
