// The order of what a client sends, in both protocols.
#include "tests/rehearsal/ClientTexts.h"

namespace velto::rehearsal {
namespace {

TEST(Protocol, TheOrderOfASessionIsHeld) {
    for (const auto provider : kAllVoiceProviders) {
        SCOPED_TRACE(rawValue(provider));
        const auto& [path, configuration, audio, text, answer] = clientTexts(provider);
        const auto protocol = makeServerProtocol(path, [](const Outgoing&) {});
        // The close code of the first violation; 0 without one.
        const auto code = [&](const std::vector<std::string>& messages) -> int {
            for (const auto& each : messages)
                if (const auto message = protocol->receive(each); !message)
                    return message.error().closeCode;
            return 0;
        };
        EXPECT_EQ(code({audio}), Violation::policy) << "before the configuration";
        EXPECT_EQ(code(text), Violation::policy);
        EXPECT_EQ(code({configuration}), 0);
        EXPECT_EQ(code({configuration}), Violation::policy);
        EXPECT_EQ(code({audio}), 0) << "does not wait for the server to be ready";
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
        if (provider == VoiceProvider::gemini) {
            EXPECT_EQ(code({replaced(answer.front(), "end_call", "end")}), Violation::policy);
        }
        EXPECT_EQ(code(answer), 0);
        EXPECT_EQ(code(answer), Violation::policy) << "twice";
        EXPECT_EQ(code({"{"}), Violation::invalidPayload);
    }
}

} // namespace
} // namespace velto::rehearsal
