// Base64: every engine against the portable one, and every kind of text that must be refused.
#include "VeltoShared/voice/Base64.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace velto {
namespace {

using Base64::Engine;

std::vector<Engine> engines() {
    std::vector<Engine> available;
    for (const auto engine : {Engine::portable, Engine::avx2, Engine::avx512})
        if (Base64::isAvailable(engine))
            available.push_back(engine);
    return available;
}

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

std::string randomBytes(std::size_t count) {
    static std::mt19937 generator(7);
    std::string bytes(count, ' ');
    for (char& byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

TEST(Base64, StandardVectors) {
    const std::pair<const char*, const char*> vectors[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xFB\xFF\xBF", "+/+/"}};
    for (const auto engine : engines())
        for (const auto& [bytes, text] : vectors) {
            EXPECT_EQ(encoded(bytes, engine), text);
            EXPECT_EQ(decoded(text, engine), bytes);
        }
}

TEST(Base64, EveryLengthSurvivesEveryEngine) {
    for (std::size_t size = 0; size < 400; ++size) {
        const auto bytes = randomBytes(size);
        const auto text = encoded(bytes, Engine::portable);
        for (const auto engine : engines()) {
            ASSERT_EQ(encoded(bytes, engine), text);
            ASSERT_EQ(decoded(text, engine), bytes);
        }
    }
}

TEST(Base64, AnyWrongCharacterAnywhereIsRefused) {
    constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto good = encoded(randomBytes(189), Engine::portable);
    for (std::size_t at = 0; at < good.size(); ++at)
        for (int c = 0; c < 256; ++c) {
            if (c == '=' && at + 1 == good.size())
                continue; // well-formed when it leaves no bits over
            auto text = good;
            text[at] = static_cast<char>(c);
            for (const auto engine : engines())
                ASSERT_EQ(decoded(text, engine).has_value(), kAlphabet.find(text[at]) != kAlphabet.npos)
                    << "character " << c << " at " << at;
        }
}

TEST(Base64, MalformedTextsAreRefused) {
    const std::string filler(192, 'A');
    for (const char* end :
         {"Z", "Zg", "Zg=", "Zg===", "====", "Z===", "Zm=v", "Zg==Zg==", "Zh==", "Zm9=", "Zm9v\n", "Zg=A"})
        for (const auto engine : engines()) {
            EXPECT_FALSE(decoded(end, engine)) << end;
            EXPECT_FALSE(decoded(filler + end, engine)) << end;
        }
    for (const auto engine : engines()) {
        EXPECT_FALSE(decoded(std::string_view("Zm9\0", 4), engine));
        EXPECT_FALSE(decoded("Zg==" + filler, engine));
        EXPECT_FALSE(decoded("Zg==" + filler + "Zg==", engine));
        EXPECT_FALSE(decoded(filler + "\n" + filler + "AAA", engine));
        std::byte little[2];
        EXPECT_FALSE(Base64::decode("Zm9v", little, engine));
    }
}

} // namespace
} // namespace velto
