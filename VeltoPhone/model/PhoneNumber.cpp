#include "VeltoPhone/model/PhoneNumber.h"

#include "VeltoShared/core/Utf8.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <boost/algorithm/string/trim.hpp>

#include <algorithm>
#include <charconv>

namespace velto::phone {
namespace {

constexpr std::size_t kLongest = 40;   ///< characters of a number
constexpr std::size_t kMostShown = 32; ///< bytes of what is none
constexpr std::string_view kSeparators = " -./()";

struct Sign {
    std::string_view utf8;
    std::string_view plain;
};
constexpr Sign kForeignSigns[] = {
    {"\t", " "},     {"\n", " "},     {"\r", " "},     {"\u00a0", " "}, {"\u2007", " "}, {"\u2009", " "},
    {"\u202f", " "}, {"\u2010", "-"}, {"\u2011", "-"}, {"\u2012", "-"}, {"\u2013", "-"}, {"\u2014", "-"},
    {"\u2212", "-"}, {"\u00ad", ""},  {"\u200b", ""},  {"\u200c", ""},  {"\u200d", ""},  {"\u200e", ""},
    {"\u200f", ""},  {"\u202a", ""},  {"\u202b", ""},  {"\u202c", ""},  {"\u202d", ""},  {"\u202e", ""},
    {"\u2060", ""},  {"\u2066", ""},  {"\u2067", ""},  {"\u2068", ""},  {"\u2069", ""},  {"\ufeff", ""}};

/// Without the blanks at its ends either.
std::string withPlainSigns(std::string text) {
    for (const auto& sign : kForeignSigns)
        boost::replace_all(text, sign.utf8, sign.plain);
    boost::trim_if(text, boost::is_any_of(" "));
    return text;
}

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

std::string plainNumberText(std::string_view text) {
    return withPlainSigns(percentDecoded(withoutScheme(withPlainSigns(std::string(text)))));
}

Result<std::string> phoneNumber(std::string_view text) {
    const auto given = plainNumberText(text);
    std::string number;
    std::copy_if(given.begin(), given.end(), std::back_inserter(number),
                 [](char character) { return kSeparators.find(character) == std::string_view::npos; });
    if (isNumber(number))
        return number;
    return Failure{.description = "Not a phone number: " + shown(given)};
}

} // namespace velto::phone
