// The strictness of both protocols: form and order of what a client sends.
#include "rehearsal/server/GeminiClientMessages.h"
#include "rehearsal/server/OpenAIClientMessages.h"
#include "tests/rehearsal/ClientTexts.h"

#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

using Use = std::function<void(json::value)>;

/// Each key of a message in turn: missing, beside an unknown one, and of another type.
void deviate(const json::value& value, const Use& use) {
    if (const auto* object = value.if_object()) {
        auto more = *object;
        more["unknown"] = 1;
        use(more);
        for (const auto& entry : *object) {
            auto less = *object;
            less.erase(entry.key());
            use(less);
            deviate(entry.value(), [&](json::value changed) {
                auto other = *object;
                other[entry.key()] = std::move(changed);
                use(other);
            });
        }
    } else if (const auto* list = value.if_array()) {
        use(json::array{});
        use(json::array{list->front(), list->front()});
        deviate(list->front(), [&](json::value changed) { use(json::array{std::move(changed)}); });
    }
    if (!value.is_object())
        use(json::object{});
    use(nullptr);
    use(17);
}

struct ProtocolTest : ForEachProvider {
    static std::optional<ClientMessage> parsed(const std::string& text) {
        if (isGemini()) {
            auto message = parseGeminiMessage(text);
            return message ? std::optional(*message) : std::nullopt;
        }
        auto message = parseOpenAIMessage(text);
        if (!message)
            return {};
        const auto* asked = std::get_if<ClientMessage>(&*message);
        return asked != nullptr ? *asked : ClientMessage(TextMessage{"response.create"});
    }

    std::vector<Outgoing> sent;
    std::unique_ptr<ServerProtocol> protocol =
        makeServerProtocol(texts().path, [this](Outgoing message) { sent.push_back(std::move(message)); });

    /// The close code of the first violation; 0 without one.
    int code(const std::vector<std::string>& messages) const {
        for (const auto& text : messages)
            if (const auto message = protocol->receive(text); !message)
                return message.error().closeCode;
        return 0;
    }
    int code(const std::string& message) const { return code(std::vector{message}); }
};

TEST_P(ProtocolTest, GoodMessagesAreReadAndEveryDeviationIsRefused) {
    const auto& [path, configuration, audio, text, answer] = texts();
    EXPECT_EQ(std::get<ConfigurationMessage>(*parsed(configuration)).voice, isGemini() ? "Puck" : "alloy");
    EXPECT_EQ(std::get<ConfigurationMessage>(*parsed(configuration)).systemInstruction, "Goal: a table.");
    EXPECT_EQ(std::get<AudioMessage>(*parsed(audio)).samples, (Samples{1, 2}));
    EXPECT_EQ(std::get<AudioMessage>(*parsed(replaced(audio, "AQACAA==", ""))).samples, Samples{});
    EXPECT_EQ(std::get<TextMessage>(*parsed(text.front())).text, "Call goal: a table");
    EXPECT_EQ(std::get<ToolResponseMessage>(*parsed(answer.front())).output, R"({"status":"hanging_up"})");

    std::vector<std::string> all{configuration, audio};
    all.insert(all.end(), text.begin(), text.end());
    if (!isGemini()) // whose answer may hold any object
        all.push_back(answer.front());
    for (const auto& good : all) {
        int tried = 0;
        deviate(json::parse(good), [&](const json::value& changed) {
            ++tried;
            EXPECT_FALSE(parsed(json::serialize(changed))) << changed;
        });
        EXPECT_GT(tried, 4);
    }
    for (const auto* data : {"AQACAA", "AQACAA=", "AQACAB==", "AQAC\\nAA==", "AQACAQ==AQACAQ==", "AQAC",
                             "AQA C", "====", "AQ-CAA=="})
        EXPECT_FALSE(parsed(replaced(audio, "AQACAA==", data))) << data;
    for (const auto* wrong :
         {"", "{", "[]", "null", "{}", R"({"other":{}})", R"({"type":"other"})", "{\"setup\": {}}", "\xff"})
        EXPECT_FALSE(parsed(wrong)) << wrong;
    EXPECT_FALSE(parsed(audio + "\n"));
}

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
