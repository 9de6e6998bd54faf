// Reading single values of a reply object without trusting its shape.
#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace velto::ctl::Reply {

/// A missing key or a value of another kind gives false, 0 or nothing.
inline bool flag(const boost::json::object& object, boost::json::string_view key) {
    const auto* value = object.if_contains(key);
    return value && value->is_bool() && value->get_bool();
}

inline double number(const boost::json::object& object, boost::json::string_view key) {
    const auto* value = object.if_contains(key);
    return value && value->is_number() ? value->to_number<double>() : 0;
}

inline std::int64_t integer(const boost::json::object& object, boost::json::string_view key) {
    const auto* value = object.if_contains(key);
    return value && value->is_int64() ? value->get_int64() : 0;
}

inline std::string text(const boost::json::object& object, boost::json::string_view key) {
    const auto* value = object.if_contains(key);
    return value && value->is_string() ? std::string(value->get_string()) : std::string();
}

inline std::vector<std::string> texts(const boost::json::object& object, boost::json::string_view key) {
    std::vector<std::string> found;
    const auto* value = object.if_contains(key);
    if (const auto* list = value ? value->if_array() : nullptr)
        for (const auto& element : *list)
            if (element.is_string())
                found.emplace_back(element.get_string());
    return found;
}

} // namespace velto::ctl::Reply
