// Universally unique identifiers (RFC 4122).
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    /// Version 4, from the system's random source. Any thread.
    static UUID random();
    /// 36 characters, 8-4-4-4-12 hexadecimal digits of either case; none for any other text.
    static std::optional<UUID> parse(std::string_view text);
    /// The canonical form in upper case.
    std::string text() const;

    auto operator<=>(const UUID&) const = default;
};

} // namespace velto

template <>
struct std::hash<velto::UUID> {
    std::size_t operator()(const velto::UUID& id) const noexcept;
};
