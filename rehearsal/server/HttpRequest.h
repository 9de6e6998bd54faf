// A request of HTTP/1.1 (RFC 9112) as it came.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto::rehearsal {

struct HttpRequest {
    std::string method;
    std::string target; ///< path and query, encoded
    int version = 11;   ///< 11 is HTTP/1.1
    std::vector<std::pair<std::string, std::string>> fields;
    std::string body;

    std::string_view path() const;
    bool hasQuery() const { return target.find('?') != std::string::npos; }
    /// The decoded value of a query that is exactly one item of this name.
    std::optional<std::string> onlyQueryItem(std::string_view name) const;
    /// Whether there is a field of this name, in whatever case.
    bool has(std::string_view name) const;
    /// The value of the field when there is exactly one of this name, in whatever case.
    std::optional<std::string_view> field(std::string_view name) const;
};

/// RFC 3986, section 2.1; none when a percent sign is not followed by two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text);

} // namespace velto::rehearsal
