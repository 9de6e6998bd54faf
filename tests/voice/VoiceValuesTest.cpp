// The small values of the voice room: hosts, broken UTF-8.
#include "VeltoShared/core/Utf8.h"
#include "VeltoShared/voice/HostAddress.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

TEST(HostAddress, HostsAndPorts) {
    const std::tuple<const char*, HostAddress, const char*> cases[] = {
        {"example.org", {"example.org", 443, false}, "example.org"},
        {"localhost:8443", {"localhost", 8443, false}, "localhost:8443"},
        {"127.0.0.1:1", {"127.0.0.1", 1, true}, "127.0.0.1:1"},
        {"::1", {"::1", 443, true}, "[::1]"},
        {"[::1]:65535", {"::1", 65535, true}, "[::1]:65535"},
    };
    for (const auto& [text, expected, header] : cases) {
        EXPECT_EQ(HostAddress::parse(text), expected) << text;
        EXPECT_EQ(expected.header(), header);
    }
    for (const char* text :
         {"", ":443", "host:", "host:0", "host:65536", "host:44x", "host:-1", "a b", "a/b", "user@host",
          "https://host", "[::1", "[::1]x", "[host]:1", "[]:1", "a:b:c", "host\n"})
        EXPECT_FALSE(HostAddress::parse(text)) << text;
}

TEST(Utf8, BrokenPartsBecomeReplacementCharacters) {
    const std::string r = "\xEF\xBF\xBD";
    const std::string plain(130, 'x');
    const std::pair<std::string, std::string> cases[] = {
        {"gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
        {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {"\xFF", r},
        {"a\200b", "a" + r + "b"},
        {"\xC3", r},
        {"\xC0\xAF", r + r},                          // overlong
        {"\xE0\x80\x80", r + r + r},                  // overlong
        {"\xED\xA0\x80", r + r + r},                  // a surrogate
        {"\xF4\x90\x80\x80", r + r + r + r},          // beyond the last character
        {"\360\237\230z", r + "z"},                   // three of four bytes are one broken part
        {"\xE2\x82\xE2\x82\xAC", r + "\xE2\x82\xAC"}, // then a whole character
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(repairedUtf8(bytes), text);
        EXPECT_EQ(repairedUtf8(plain + bytes + plain), plain + text + plain);
        EXPECT_EQ(isValidUtf8(plain + bytes), bytes == text);
        EXPECT_TRUE(isValidUtf8(repairedUtf8(bytes)));
    }
}

} // namespace
} // namespace velto
