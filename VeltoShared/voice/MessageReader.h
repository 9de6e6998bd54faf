// Received JSON messages: one reader for all messages of a session, and careful looks into them.
#pragma once

#include <boost/json/array.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parser.hpp>
#include <boost/json/value.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace velto {

/// Nesting deeper than this is malformed, in messages as in what they carry.
inline constexpr std::size_t kDeepestJSON = 64;

/// Parses one message after the other into memory of its own. One thread.
class MessageReader {
  public:
    MessageReader();

    /// Calls `use` with the message if it is a JSON object; what `use` is given ends with the call.
    template <class Use>
    void read(std::string_view text, Use use) {
        if (const auto parsed = parsedObject(text); parsed.is_object())
            use(parsed.get_object());
        parser_.reset();
        memory_.release();
    }

  private:
    boost::json::value parsedObject(std::string_view text);

    // The usual audio message fits.
    static constexpr std::size_t kScratch = std::size_t{160} << 10;
    std::unique_ptr<unsigned char[]> scratch_ = std::make_unique_for_overwrite<unsigned char[]>(kScratch);
    boost::json::monotonic_resource memory_{scratch_.get(), kScratch};
    boost::json::parser parser_;
};

/// A JSON text of one value, parsed within the same bounds; none when it is malformed.
boost::json::value parsedJSON(std::string_view text, boost::system::error_code& malformed);
/// Compact JSON text to send; texts in it that are not UTF-8 get U+FFFD for what is broken.
std::string sendable(const boost::json::value& message);

// Members of an object, by key; none when the member is missing or of another type.
const boost::json::object* objectAt(const boost::json::object& parent, std::string_view key);
const boost::json::string* stringAt(const boost::json::object& parent, std::string_view key);
/// An array with nothing but objects in it.
const boost::json::array* objectsAt(const boost::json::object& parent, std::string_view key);
bool isTrueAt(const boost::json::object& parent, std::string_view key);
/// The text, or the one given in its place. It is the object's: valid as long as that is.
std::string_view textAt(const boost::json::object& parent, std::string_view key,
                        std::string_view otherwise = {});

} // namespace velto
