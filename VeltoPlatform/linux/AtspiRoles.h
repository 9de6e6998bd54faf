// The accessibility bus's roles and states, and what they are called here.
#pragma once

#include <cstdint>

namespace velto {

/// Roles that the reading depends on; the numbers of AT-SPI's enumeration `AtspiRole` (atspi-constants.h).
enum class AtspiRole : std::uint32_t {
    text = 61,
    application = 75,
};

/// Bits of `AtspiStateType`; 64 of them in a state.
namespace AtspiState {
inline constexpr unsigned enabled = 8;
inline constexpr unsigned multiLine = 17;
inline constexpr unsigned sensitive = 24;
inline constexpr unsigned visible = 30;
constexpr bool has(std::uint64_t state, unsigned bit) {
    return (state >> bit & 1) != 0;
}
} // namespace AtspiState

/// Where an element of a role keeps its texts.
enum class AtspiContent {
    button,  ///< one name, which is title and description
    label,   ///< one text, which is the value
    edited,  ///< the value is its text
    counted, ///< the value is a number
    other,   ///< no value
};

/// "AXButton" and so on; "AXUnknown" for a role that has no name here.
const char* accessibilityRole(AtspiRole role, bool multiLine);
AtspiContent contentOf(AtspiRole role);

} // namespace velto
