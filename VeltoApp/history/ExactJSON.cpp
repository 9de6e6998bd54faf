// The JSON library's parser with a receiver that reads the text of each fractional number again.
#include "VeltoApp/history/ExactJSON.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>

#include <charconv>
#include <limits>

namespace velto {
namespace {

namespace json = boost::json;

class Receiver {
  public:
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    bool on_document_begin(json::error_code&) {
        stack.reset();
        return true;
    }
    bool on_document_end(json::error_code&) { return true; }
    bool on_object_begin(json::error_code&) { return true; }
    bool on_object_end(std::size_t size, json::error_code&) {
        stack.push_object(size);
        return true;
    }
    bool on_array_begin(json::error_code&) { return true; }
    bool on_array_end(std::size_t size, json::error_code&) {
        stack.push_array(size);
        return true;
    }
    bool on_key_part(json::string_view part, std::size_t, json::error_code&) {
        stack.push_chars(part);
        return true;
    }
    bool on_key(json::string_view part, std::size_t, json::error_code&) {
        stack.push_key(part);
        return true;
    }
    bool on_string_part(json::string_view part, std::size_t, json::error_code&) {
        stack.push_chars(part);
        return true;
    }
    bool on_string(json::string_view part, std::size_t, json::error_code&) {
        stack.push_string(part);
        return true;
    }
    bool on_number_part(json::string_view part, json::error_code&) {
        number_ += part;
        return true;
    }
    bool on_int64(std::int64_t number, json::string_view, json::error_code&) {
        number_.clear();
        stack.push_int64(number);
        return true;
    }
    bool on_uint64(std::uint64_t number, json::string_view, json::error_code&) {
        number_.clear();
        stack.push_uint64(number);
        return true;
    }
    bool on_double(double number, json::string_view part, json::error_code&) {
        number_ += part;
        std::from_chars(number_.data(), number_.data() + number_.size(), number);
        number_.clear();
        stack.push_double(number);
        return true;
    }
    bool on_bool(bool value, json::error_code&) {
        stack.push_bool(value);
        return true;
    }
    bool on_null(json::error_code&) {
        stack.push_null();
        return true;
    }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

    json::value_stack stack;

  private:
    std::string number_;
};

} // namespace

std::optional<json::value> parseExactJSON(std::string_view text) {
    json::basic_parser<Receiver> parser{json::parse_options{}};
    json::error_code error;
    const auto read = parser.write_some(false, text.data(), text.size(), error);
    if (error || read != text.size())
        return std::nullopt;
    return parser.handler().stack.release();
}

} // namespace velto
