#include "rehearsal/server/JSONNode.h"

#include <boost/json.hpp>

#include <algorithm>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

bool hasWhitespaceBetweenTokens(std::string_view text) {
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString && c == '\\')
            ++i;
        else if (c == '"')
            inString = !inString;
        else if (!inString && (c == ' ' || c == '\t' || c == '\r' || c == '\n'))
            return true;
    }
    return false;
}

} // namespace

void JSONNode::refuse(std::string_view why) const {
    throw Refused{path_ + " " + std::string(why)};
}

std::vector<JSONNode> JSONNode::members(std::initializer_list<std::string_view> keys) const {
    if (const auto* object = value_->if_object())
        for (const auto& entry : *object)
            if (std::find(keys.begin(), keys.end(), std::string_view(entry.key())) == keys.end())
                throw Refused{path_ + "." + std::string(entry.key()) + " is not a key of this message"};
    std::vector<JSONNode> nodes;
    for (const auto key : keys)
        nodes.push_back(anyMember(key));
    if (!value_->is_object())
        refuse("is not an object");
    return nodes;
}

JSONNode JSONNode::anyMember(std::string_view key) const {
    const auto* object = value_->if_object();
    if (object == nullptr)
        refuse("is not an object");
    const auto* member = object->if_contains(key);
    if (member == nullptr)
        throw Refused{path_ + "." + std::string(key) + " is missing"};
    return {*member, path_ + "." + std::string(key)};
}

std::string_view JSONNode::onlyKey() const {
    const auto* object = value_->if_object();
    if (object == nullptr || object->size() != 1)
        refuse("is not an object with one key");
    return object->begin()->key();
}

JSONNode JSONNode::only() const {
    const auto* list = value_->if_array();
    if (list == nullptr || list->size() != 1)
        refuse("is not a list of one element");
    return {list->front(), path_ + "[0]"};
}

std::string JSONNode::text() const {
    if (!value_->is_string())
        refuse("is not a text");
    return std::string(value_->get_string());
}

std::string JSONNode::nonEmpty() const {
    auto found = text();
    if (found.empty())
        refuse("is empty");
    return found;
}

void JSONNode::is(const json::value& expected) const {
    if (const auto found = json::serialize(*value_); found != json::serialize(expected))
        refuse("is " + found.substr(0, 80) + " instead of " + json::serialize(expected));
}

void JSONNode::isText(std::string_view expected) const {
    is(json::value(json::string(expected)));
}

std::string JSONNode::container() const {
    if (!value_->is_object() && !value_->is_array())
        refuse("is neither an object nor a list");
    return json::serialize(*value_);
}

Checked<json::value> parseCompact(std::string_view text) {
    json::error_code error;
    auto value = json::parse(text, error);
    if (error)
        return Violation{Violation::invalidPayload, "not JSON: " + error.message()};
    if (hasWhitespaceBetweenTokens(text))
        return Violation{Violation::invalidPayload, "white space between tokens"};
    return value;
}

} // namespace velto::rehearsal
