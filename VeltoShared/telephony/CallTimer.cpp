// Around each colon: the whole run of digits before it, two digits behind it, and a word's end on both sides.
#include "VeltoShared/telephony/CallTimer.h"

#include "VeltoShared/telephony/Letters.h"

namespace velto {
namespace {

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isTimerAt(std::string_view text, std::size_t colon) {
    std::size_t first = colon;
    while (first > 0 && colon - first < 4 && isDigit(text[first - 1]))
        --first;
    const auto digits = colon - first;
    if (digits < 1 || digits > 3 || endsInWord(text.substr(0, first)))
        return false;
    const auto rest = text.substr(colon + 1);
    return rest.size() >= 2 && isDigit(rest[0]) && isDigit(rest[1]) && !beginsInWord(rest.substr(2));
}

} // namespace

bool showsCallTimer(std::string_view text) {
    for (auto colon = text.find(':'); colon != std::string_view::npos; colon = text.find(':', colon + 1))
        if (isTimerAt(text, colon))
            return true;
    return false;
}

} // namespace velto
