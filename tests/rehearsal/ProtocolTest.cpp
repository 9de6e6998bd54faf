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

TEST_P(ProtocolTest, FixedValuesAreCheckedToTheLetter) {
    using Changes = std::vector<std::pair<const char*, const char*>>;
    const auto refuses = [](const std::string& good, const Changes& changes) {
        for (const auto& [from, to] : changes)
            EXPECT_FALSE(parsed(replaced(good, from, to))) << from;
    };
    const auto& all = texts();
    refuses(all.configuration, {{"end_call", "x"}, {"goodbye.", "x"}, {"Short", "x"}});
    if (isGemini()) {
        refuses(all.configuration, {{"500", "500.0"},
                                    {"false", "true"},
                                    {"AUDIO", "x"},
                                    {"models/", "x"},
                                    {"STRING", "string"},
                                    {"OBJECT", "object"},
                                    {"START", "x"},
                                    {"no longer", "x"}});
        refuses(all.audio, {{"16000", "24000"}});
        refuses(all.text.front(), {{"user", "x"}, {"true", "false"}});
        refuses(all.answer.front(), {{R"({"status":"hanging_up"})", "\"ok\""}});
    } else {
        refuses(all.configuration, {{R"("audio","text")", R"("text","audio")"},
                                    {R"("audio","text")", R"("audio")"},
                                    {"pcm16", "g711_ulaw"},
                                    {"whisper-1", "x"},
                                    {"server_vad", "semantic_vad"},
                                    {R"("server_vad")", R"("server_vad","threshold":0.5)"},
                                    {"function", "x"},
                                    {R"("object")", R"("OBJECT")"},
                                    {R"("string")", R"("STRING")"},
                                    {"auto", "none"},
                                    {"alloy", ""}});
        refuses(all.text.front(), {{"user", "assistant"}, {"input_text", "text"}, {"\"message\"", "\"x\""}});
        refuses(kResponseCreate, {{"\"}", "\",\"event_id\":\"1\"}"}});
    }
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

TEST(OpenAIProtocol, EachItemIsFollowedByOneRequestForAResponse) {
    const auto& all = clientTexts(VoiceProvider::openai);
    const auto outcome = [&](const std::vector<std::string>& messages) {
        const auto protocol = makeServerProtocol(all.path, [](const Outgoing&) {});
        protocol->connected();
        std::string text;
        for (const auto& message : messages) {
            const auto received = protocol->receive(message);
            text += !received ? "!" : !*received ? "-" : std::to_string((*received)->index());
        }
        return text;
    };
    const auto& item = all.text.front();
    EXPECT_EQ(outcome({all.configuration, item, all.audio, kResponseCreate}), "0-12") << "the turn, once";
    EXPECT_EQ(outcome({kResponseCreate}), "!");
    EXPECT_EQ(outcome({all.configuration, kResponseCreate}), "0!");
    EXPECT_EQ(outcome({all.configuration, item, kResponseCreate, kResponseCreate}), "0-2!");
    const auto protocol = makeServerProtocol(all.path, [](const Outgoing&) {});
    protocol->connected();
    protocol->turnBegins();
    protocol->turnEnds("goal met");
    for (const auto& message : {all.configuration, item})
        EXPECT_TRUE(protocol->receive(message));
    EXPECT_FALSE(protocol->receive(all.answer.front())) << "a response to the first was not asked for";
}

} // namespace
} // namespace velto::rehearsal
