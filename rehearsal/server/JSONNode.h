// Values of a message, checked to the key.
#pragma once

#include "rehearsal/server/Violation.h"

#include <boost/json/value.hpp>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace velto::rehearsal {

/// Thrown by JSONNode and caught by `parseChecked`.
struct Refused {
    std::string what;
};

/// A value, which must outlive it, and how it was reached. Operations throw Refused for whatever is not as
/// they say.
class JSONNode {
  public:
    JSONNode(const boost::json::value& value, std::string path) : value_(&value), path_(std::move(path)) {}

    /// The members of an object that has exactly these keys, in the order of the keys.
    std::vector<JSONNode> members(std::initializer_list<std::string_view> keys) const;
    JSONNode member(std::string_view key) const { return members({key}).front(); }
    /// A member of an object that may have others.
    JSONNode anyMember(std::string_view key) const;
    /// The key of an object that has only one.
    std::string_view onlyKey() const;
    /// The only element of a list.
    JSONNode only() const;

    std::string text() const;
    std::string nonEmpty() const;
    /// Texts, types and numbers are compared as they are written: 500 is not 500.0.
    void is(const boost::json::value& expected) const;
    void isText(std::string_view expected) const;
    /// An object or a list, as compact JSON.
    std::string container() const;
    [[noreturn]] void refuse(std::string_view why) const;

  private:
    const boost::json::value* value_;
    std::string path_;
};

/// JSON without white space between its tokens; else a violation.
Checked<boost::json::value> parseCompact(std::string_view text);

/// `parse` takes the message as a JSONNode and answers what it says.
template <class Parse>
auto parseChecked(std::string_view text, const Parse& parse)
    -> Checked<decltype(parse(std::declval<const JSONNode&>()))> {
    const auto value = parseCompact(text);
    if (!value)
        return value.error();
    try {
        return parse(JSONNode(*value, "message"));
    } catch (const Refused& refused) {
        return Violation{Violation::invalidPayload, refused.what};
    }
}

} // namespace velto::rehearsal
