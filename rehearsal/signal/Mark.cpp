// Marks as text of dual-tone symbols.
#include "rehearsal/signal/Mark.h"

namespace velto::rehearsal {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

char checkDigit(int number, Mark::Place place) {
    // Weights without a common factor with ten: each wrong digit, and two digits swapped, change the sum.
    const int sum = 3 * (number / 10) + 7 * (number % 10) + (place == Mark::Place::end ? 5 : 0);
    return static_cast<char>('0' + sum % 10);
}

} // namespace

std::string Mark::symbols() const {
    std::string text(1, place == Place::begin ? 'A' : 'B');
    text += static_cast<char>('0' + number / 10 % 10);
    text += static_cast<char>('0' + number % 10);
    text += checkDigit(number, place);
    return text;
}

std::optional<Mark> Mark::parse(std::string_view symbols) {
    if (symbols.size() != length || (symbols[0] != 'A' && symbols[0] != 'B') || !isDigit(symbols[1]) ||
        !isDigit(symbols[2]))
        return {};
    const Mark mark{(symbols[1] - '0') * 10 + (symbols[2] - '0'),
                    symbols[0] == 'A' ? Place::begin : Place::end};
    if (symbols[3] != checkDigit(mark.number, mark.place))
        return {};
    return mark;
}

} // namespace velto::rehearsal
