// Splitting host and port; an address with colons needs brackets only when a port follows.
#include "VeltoShared/voice/HostAddress.h"

#include <boost/asio/ip/address.hpp>

#include <algorithm>
#include <charconv>

namespace velto {
namespace {

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_';
}

std::optional<std::uint16_t> parsePort(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port == 0)
        return std::nullopt;
    return port;
}

} // namespace

std::optional<HostAddress> HostAddress::parse(std::string_view text) {
    std::string_view host = text;
    std::optional<std::string_view> port;
    const bool bracketed = text.starts_with('[');
    if (bracketed) {
        const auto end = text.find(']');
        if (end == std::string_view::npos)
            return std::nullopt;
        host = text.substr(1, end - 1);
        if (const auto rest = text.substr(end + 1); rest.starts_with(':'))
            port = rest.substr(1);
        else if (!rest.empty())
            return std::nullopt;
    } else if (std::count(text.begin(), text.end(), ':') == 1) {
        host = text.substr(0, text.find(':'));
        port = text.substr(text.find(':') + 1);
    }
    HostAddress address;
    address.host = host;
    boost::system::error_code notAnAddress;
    const auto literal = boost::asio::ip::make_address(address.host, notAnAddress);
    address.isLiteral = !notAnAddress;
    if (bracketed && !(address.isLiteral && literal.is_v6()))
        return std::nullopt;
    if (!address.isLiteral &&
        (host.empty() || host.size() > 253 || !std::ranges::all_of(host, isNameCharacter)))
        return std::nullopt;
    if (port) {
        const auto number = parsePort(*port);
        if (!number)
            return std::nullopt;
        address.port = *number;
    }
    return address;
}

std::string HostAddress::header() const {
    std::string text = host;
    if (host.find(':') != std::string::npos) {
        text.insert(text.begin(), '[');
        text += ']';
    }
    if (port != 443)
        text.append(":").append(std::to_string(port));
    return text;
}

} // namespace velto
