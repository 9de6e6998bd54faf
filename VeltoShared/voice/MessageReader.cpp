#include "VeltoShared/voice/MessageReader.h"

#include "VeltoShared/core/Utf8.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>

namespace velto {
namespace {

namespace json = boost::json;

json::parse_options bounded() {
    json::parse_options options;
    options.max_depth = kDeepestJSON;
    return options;
}

} // namespace

MessageReader::MessageReader() : parser_({}, bounded()) {}

json::value MessageReader::parsedObject(std::string_view text) {
    parser_.reset(&memory_);
    boost::system::error_code malformed;
    parser_.write(text.data(), text.size(), malformed);
    if (malformed)
        return nullptr;
    return parser_.release();
}

json::value parsedJSON(std::string_view text, boost::system::error_code& malformed) {
    return json::parse(text, malformed, {}, bounded());
}

std::string sendable(const json::value& message) {
    std::string text = json::serialize(message);
    if (isValidUtf8(text))
        return text;
    return repairedUtf8(text);
}

const json::object* objectAt(const json::object& parent, std::string_view key) {
    const json::value* found = parent.if_contains(key);
    return found ? found->if_object() : nullptr;
}

const json::string* stringAt(const json::object& parent, std::string_view key) {
    const json::value* found = parent.if_contains(key);
    return found ? found->if_string() : nullptr;
}

const json::array* objectsAt(const json::object& parent, std::string_view key) {
    const json::value* found = parent.if_contains(key);
    const json::array* array = found ? found->if_array() : nullptr;
    if (!array || !std::ranges::all_of(*array, [](const json::value& each) { return each.is_object(); }))
        return nullptr;
    return array;
}

bool isTrueAt(const json::object& parent, std::string_view key) {
    const json::value* found = parent.if_contains(key);
    return found && found->is_bool() && found->get_bool();
}

std::string_view textAt(const json::object& parent, std::string_view key, std::string_view otherwise) {
    const json::string* text = stringAt(parent, key);
    return text ? std::string_view(text->data(), text->size()) : otherwise;
}

} // namespace velto
