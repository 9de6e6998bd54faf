// The Gemini Live wire format: what is sent, and what each received message stands for.
#include "VeltoShared/voice/GeminiMessages.h"

#include "tests/voice/EventText.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

namespace velto::test {
namespace {

namespace json = boost::json;

GeminiMessages make(std::string key = "k") {
    return GeminiMessages({std::move(key), "some-model", "Puck", "Be brief.", "localhost:1"});
}

TEST(GeminiMessages, RequestEscapesTheKey) {
    const auto request = make("a+b/c=&d ~-._%\xC3\xA9").request();
    EXPECT_EQ(request.host, "localhost:1");
    EXPECT_EQ(request.target, "/ws/google.ai.generativelanguage.v1beta.GenerativeService.BidiGenerateContent"
                              "?key=a%2Bb%2Fc%3D%26d%20~-._%25%C3%A9");
    EXPECT_TRUE(request.headers.empty());
}

TEST(GeminiMessages, AudioTextTurnAndToolResponse) {
    EXPECT_EQ(make().audio(std::as_bytes(std::span("abcd", 4))),
              R"({"realtimeInput":{"audio":{"mimeType":"audio/pcm;rate=16000","data":"YWJjZA=="}}})");
    EXPECT_EQ(
        make().clientText("Say \"hi\" \x01 bad \xFF"),
        Lines{R"({"clientContent":{"turns":[{"role":"user","parts":[{"text":"Say \"hi\" \u0001 bad �"}]}],)"
              R"("turnComplete":true}})"});
    const auto response = [](std::string result) {
        const auto sent = make().toolResponse("id 1", "end_call", result);
        EXPECT_EQ(sent.size(), 1u);
        const auto parsed = json::parse(sent.front());
        EXPECT_EQ(parsed.at_pointer("/toolResponse/functionResponses/0/id"), "id 1");
        EXPECT_EQ(parsed.at_pointer("/toolResponse/functionResponses/0/name"), "end_call");
        return json::serialize(parsed.at_pointer("/toolResponse/functionResponses/0/response"));
    };
    EXPECT_EQ(response(R"( {"status" : "hanging_up"} )"), R"({"status":"hanging_up"})");
    EXPECT_EQ(response("[1, 2]"), "[1,2]");
    for (const std::string text : {"", "nonsense", "{", "5", "\"text\"", "null", "true", "{} {}"})
        EXPECT_EQ(response(text), "{}") << text;
    EXPECT_EQ(response(std::string(100'000, '[')), "{}");
}

TEST(GeminiMessages, OrderOfBranches) {
    const std::pair<const char*, Lines> cases[] = {
        {R"({"serverContent":{"turnComplete":true},"setupComplete":{}})", {"setup"}},
        {R"({"setupComplete":null,"goAway":1})", {"setup"}},
        {R"({"goAway":false,"toolCall":{"functionCalls":[{}]}})", {"closed goAway"}},
        {R"({"toolCall":{"functionCalls":[{"id":"1","name":"end_call","args":{"reason":"goal met"}},{"id":"2"}]},
             "serverContent":{"turnComplete":true}})",
         {R"(tool 1|end_call|{"reason":"goal met"})", "tool 2||{}"}},
        {R"({"toolCall":{"functionCalls":[]},"serverContent":{"turnComplete":true}})", {}},
        {R"({"serverContent":{"turnComplete":true,"modelTurn":{"parts":[
             {"inlineData":{"data":"QUI=","mimeType":7}},{"text":"thought"},{"inlineData":{"data":"Q0Q="}}]},
             "outputTranscription":{"text":"hello"},"interrupted":true}})",
         {"interrupted", "agent hello", "audio AB", "audio CD", "turn"}},
        {R"({"serverContent":{"inputTranscription":{"text":"\u00fc"},"outputTranscription":{"text":"o"}}})",
         {"caller \xC3\xBC", "agent o"}},
        {R"({"serverContent":{"modelTurn":{"parts":[{"inlineData":{"data":"QQ=!"}},
             {"inlineData":{"data":"QQ=="}},{"inlineData":{"data":""}}]}}})",
         {"audio A", "audio "}},
    };
    for (const auto& [text, lines] : cases)
        EXPECT_EQ(handled(make(), {text}), lines) << text;
}

TEST(GeminiMessages, WrongTypesSkipOnlyTheirStep) {
    // A tool call of another shape does not hide the content beside it.
    for (const char* call : {"null", "{}", R"({"functionCalls":{}})", R"({"functionCalls":[{},5]})"})
        EXPECT_EQ(handled(make(), {std::string(R"({"serverContent":{"turnComplete":true},"toolCall":)") +
                                   call + "}"}),
                  Lines{"turn"})
            << call;
    for (const char* fields :
         {R"("id":5,"name":null,"args":5)", R"("id":[],"name":{},"args":"text")", R"("args":null)"})
        EXPECT_EQ(handled(make(), {std::string(R"({"toolCall":{"functionCalls":[{)") + fields + "}]}}"}),
                  Lines{"tool ||{}"})
            << fields;
    for (const char* wrong :
         {R"("interrupted":"true")", R"("interrupted":false)", R"("inputTranscription":"hi")",
          R"("inputTranscription":{"text":""})", R"("inputTranscription":{"text":5})", R"("modelTurn":[])",
          R"("modelTurn":{"parts":{}})", R"("modelTurn":{"parts":[5,{"inlineData":{"data":"QQ=="}}]})",
          R"("modelTurn":{"parts":[{"inlineData":5},{"inlineData":{}},{"inlineData":{"data":5}}]})",
          R"("modelTurn":{"parts":[{"inlineData":{"data":"QQ"}},{"inlineData":{"data":"Q\nQ="}}]})"})
        EXPECT_EQ(handled(make(), {std::string(R"({"serverContent":{)") + wrong +
                                   R"(,"outputTranscription":{"text":"on"},"turnComplete":true}})"}),
                  (Lines{"agent on", "turn"}))
            << wrong;
    for (const char* nothing :
         {"", "null", "[]", "{}", "{", "\xFF", R"({"setupComplete":{}}x)", R"({"SetupComplete":{}})",
          R"({"serverContent":"x"})", R"({"serverContent":{"turnComplete":"true"}})"})
        EXPECT_EQ(handled(make(), {nothing}), Lines{}) << nothing;
}

TEST(GeminiMessages, DepthIsBoundedAndTheNextMessageUnharmed) {
    for (const std::size_t depth : {100u, 1'000'000u})
        EXPECT_EQ(
            handled(make(), {R"({"setupComplete":)" + std::string(depth, '[') + std::string(depth, ']') + "}",
                             R"({"a":)" + std::string(depth, '{'), R"({"setupComplete":[[{}]]})"}),
            Lines{"setup"});
}

} // namespace
} // namespace velto::test
