#include "VeltoPlatform/Preferences.h"

#include <cmath>

namespace velto {

bool Preferences::boolean(const std::string& key) {
    const auto value = object(key);
    if (!value)
        return false;
    if (const auto* flag = std::get_if<bool>(&*value))
        return *flag;
    if (const auto* number = std::get_if<std::int64_t>(&*value))
        return *number != 0;
    if (const auto* number = std::get_if<double>(&*value))
        return *number != 0;
    return false;
}

std::int64_t Preferences::integer(const std::string& key) {
    const auto value = object(key);
    if (!value)
        return 0;
    if (const auto* flag = std::get_if<bool>(&*value))
        return *flag ? 1 : 0;
    if (const auto* number = std::get_if<std::int64_t>(&*value))
        return *number;
    constexpr double kLimit = 9.2e18;
    if (const auto* number = std::get_if<double>(&*value); number && std::abs(*number) < kLimit)
        return static_cast<std::int64_t>(*number);
    return 0;
}

std::optional<std::string> Preferences::text(const std::string& key) {
    auto value = object(key);
    if (value)
        if (auto* text = std::get_if<std::string>(&*value))
            return std::move(*text);
    return std::nullopt;
}

} // namespace velto
