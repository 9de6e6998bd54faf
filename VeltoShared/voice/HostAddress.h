// A host as a user writes it in a setting: "example.org", "example.org:8443", "127.0.0.1", "[::1]:8443".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

struct HostAddress {
    std::string host; ///< without brackets
    std::uint16_t port = 443;
    bool isLiteral = false; ///< an IP address rather than a name

    /// None for an empty text, a port that is none, or characters that no host has.
    static std::optional<HostAddress> parse(std::string_view text);
    /// As it stands in the Host field of a request (RFC 9110, section 7.2).
    std::string header() const;

    bool operator==(const HostAddress&) const = default;
};

} // namespace velto
