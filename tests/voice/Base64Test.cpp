// Base64: every engine against the portable one. What must be refused the fuzz target tries.
#include "VeltoShared/voice/Base64.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace velto {
namespace {

using Base64::Engine;

std::string encoded(std::string_view bytes, Engine engine) {
    std::string text(Base64::encodedSize(bytes.size()), '?');
    EXPECT_EQ(Base64::encode(std::as_bytes(std::span(bytes)), text.data(), engine), text.size());
    return text;
}

/// Decodes into exactly the room that is promised to be enough, which the address sanitizer watches.
std::optional<std::string> decoded(std::string_view text, Engine engine) {
    std::vector<std::byte> room(Base64::decodedSize(text));
    room.shrink_to_fit();
    const auto size = Base64::decode(text, room, engine);
    if (!size)
        return std::nullopt;
    return std::string(reinterpret_cast<const char*>(room.data()), *size);
}

TEST(Base64, EveryEngineKeepsEveryLength) {
    for (const auto engine : {Engine::portable, Engine::avx2, Engine::avx512}) {
        if (!Base64::isAvailable(engine))
            continue;
        for (const auto& [bytes, text] :
             {std::pair{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xFB\xFF\xBF", "+/+/"}}) {
            EXPECT_EQ(encoded(bytes, engine), text);
            EXPECT_EQ(decoded(text, engine), bytes);
        }
        std::mt19937 generator(7);
        for (std::string bytes; bytes.size() < 400; bytes += static_cast<char>(generator())) {
            const auto text = encoded(bytes, Engine::portable);
            ASSERT_EQ(encoded(bytes, engine), text);
            ASSERT_EQ(decoded(text, engine), bytes);
        }
        std::byte little[2];
        EXPECT_FALSE(Base64::decode("Zm9v", little, engine));
    }
}

} // namespace
} // namespace velto
