// The order of what a client sends, in both protocols.
#include "tests/rehearsal/ClientTexts.h"

namespace velto::rehearsal {
namespace {

struct ProtocolTest : ForEachProvider {
    std::unique_ptr<ServerProtocol> protocol = makeServerProtocol(texts().path, [](const Outgoing&) {});

    /// The close code of the first violation; 0 without one.
    int code(const std::vector<std::string>& messages) const {
        for (const auto& text : messages)
            if (const auto message = protocol->receive(text); !message)
                return message.error().closeCode;
        return 0;
    }
    int code(const std::string& message) const { return code(std::vector{message}); }
};

TEST_P(ProtocolTest, TheOrderOfASessionIsHeld) {
    const auto& [path, configuration, audio, text, answer] = texts();
    EXPECT_EQ(code(audio), Violation::policy) << "before the configuration";
    EXPECT_EQ(code(text), Violation::policy);
    EXPECT_EQ(code(configuration), 0);
    EXPECT_EQ(code(configuration), Violation::policy);
    EXPECT_EQ(code(audio), 0) << "does not wait for the server to be ready";
    EXPECT_EQ(code(text), Violation::policy) << "does";
    protocol->connected();
    protocol->configured();
    EXPECT_EQ(code(text), 0);
    EXPECT_EQ(code(text), Violation::policy) << "twice";
    EXPECT_EQ(code(answer), Violation::policy) << "nobody asked";
    protocol->turnBegins();
    protocol->turnEnds("goal met");
    auto other = answer;
    other.front() = replaced(answer.front(), "1\"", "2\"");
    EXPECT_EQ(code(other), Violation::policy) << "of another call";
    if (isGemini()) {
        EXPECT_EQ(code(replaced(answer.front(), "end_call", "end")), Violation::policy);
    }
    EXPECT_EQ(code(answer), 0);
    EXPECT_EQ(code(answer), Violation::policy) << "twice";
    EXPECT_EQ(code("{"), Violation::invalidPayload);
}

INSTANTIATE_TEST_SUITE_P(, ProtocolTest, testing::ValuesIn(kAllVoiceProviders), ForEachProvider::name);

} // namespace
} // namespace velto::rehearsal
