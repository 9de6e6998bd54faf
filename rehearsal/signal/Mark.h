// A mark names one line of a scenario in the sound itself: where the line begins and where it ends.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace velto::rehearsal {

/// Written as four dual-tone symbols: A or B for the line's begin or end, two digits of its number, and a
/// check digit, so that a symbol lost or misread is noticed.
struct Mark {
    enum class Place { begin, end };

    static constexpr std::size_t length = 4;
    static constexpr int numbers = 100;

    int number = 0; ///< 0 to 99
    Place place = Place::begin;

    std::string symbols() const;
    /// None when the symbols are not a mark or its check digit is wrong.
    static std::optional<Mark> parse(std::string_view symbols);

    bool operator==(const Mark&) const = default;
};

} // namespace velto::rehearsal
