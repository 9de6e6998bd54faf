#include "rehearsal/server/HttpRequest.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>

namespace velto::rehearsal {

std::string_view HttpRequest::path() const {
    return std::string_view(target).substr(0, target.find('?'));
}

std::optional<std::string> HttpRequest::onlyQueryItem(std::string_view name) const {
    auto query = std::string_view(target).substr(path().size());
    const auto begin = std::string("?").append(name).append("=");
    if (!query.starts_with(begin) || query.find('&') != std::string_view::npos)
        return {};
    return percentDecoded(query.substr(begin.size()));
}

bool HttpRequest::has(std::string_view name) const {
    return std::any_of(fields.begin(), fields.end(),
                       [&](const auto& field) { return boost::algorithm::iequals(field.first, name); });
}

std::optional<std::string_view> HttpRequest::field(std::string_view name) const {
    std::optional<std::string_view> found;
    for (const auto& [key, value] : fields)
        if (boost::algorithm::iequals(key, name)) {
            if (found)
                return {};
            found = value;
        }
    return found;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    const auto digit = [](char c) {
        constexpr std::string_view digits = "0123456789abcdef";
        return digits.find(static_cast<char>(c >= 'A' && c <= 'F' ? c + ('a' - 'A') : c));
    };
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        if (i + 2 >= text.size() || digit(text[i + 1]) > 15 || digit(text[i + 2]) > 15)
            return {};
        result += static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2]));
        i += 2;
    }
    return result;
}

} // namespace velto::rehearsal
