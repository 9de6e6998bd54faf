// The OpenAI Realtime wire format: what is sent, and what each received message stands for.
#include "VeltoShared/voice/OpenAIMessages.h"

#include "tests/voice/EventText.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

namespace velto::test {
namespace {

namespace json = boost::json;

OpenAIMessages make() {
    return OpenAIMessages({"k&y \n", "a model/1", "alloy", "Be brief.", "localhost:1"});
}

TEST(OpenAIMessages, TheKeyTravelsInItsFieldOnly) {
    const auto request = make().request();
    EXPECT_EQ(request.host, "localhost:1");
    EXPECT_EQ(request.target, "/v1/realtime?model=a%20model%2F1");
    EXPECT_EQ(request.headers, (std::vector<std::pair<std::string, std::string>>{
                                   {"Authorization", "Bearer k&y"}, {"OpenAI-Beta", "realtime=v1"}}));
}

TEST(OpenAIMessages, EveryTurnIsFollowedByTheRequestToRespond) {
    const std::string respond = R"({"type":"response.create"})";
    EXPECT_EQ(make().clientText("Say \"hi\" \x01"),
              (Lines{R"({"type":"conversation.item.create","item":{"type":"message","role":"user",)"
                     R"("content":[{"type":"input_text","text":"Say \"hi\" \u0001"}]}})",
                     respond}));
    for (const std::string result : {R"({"status":"hanging_up"})", "no { JSON", "", "5"}) {
        const auto sent = make().toolResponse("id 1", "end_call", result);
        ASSERT_EQ(sent.size(), 2u);
        EXPECT_EQ(
            json::parse(sent[0]),
            (json::value{
                {"type", "conversation.item.create"},
                {"item", {{"type", "function_call_output"}, {"call_id", "id 1"}, {"output", result}}}}));
        EXPECT_EQ(sent[1], respond);
    }
    EXPECT_EQ(make().audio(std::as_bytes(std::span("abcd", 4))),
              R"({"type":"input_audio_buffer.append","audio":"YWJjZA=="})");
}

TEST(OpenAIMessages, WordsSoundAndTurns) {
    EXPECT_EQ(
        handled(make(),
                {R"({"type":"session.created","session":{"id":"s"}})", R"({"type":"session.updated"})",
                 R"({"type":"conversation.item.input_audio_transcription.completed","transcript":"\u00fc"})",
                 R"({"type":"response.audio_transcript.delta","delta":"Good"})",
                 R"({"type":"response.audio_transcript.delta","delta":" day"})",
                 R"({"type":"response.audio.delta","delta":"QUI="})",
                 R"({"delta":"","type":"response.audio.delta"})",
                 R"({"type":"response.done","response":{"status":"completed"}})"}),
        (Lines{"setup", "setup", "caller \xC3\xBC", "agent Good", "agent  day", "audio AB", "audio ",
               "turn"}));
}

TEST(OpenAIMessages, OnlyAResponseUnderWayIsInterrupted) {
    const std::string speech = R"({"type":"input_audio_buffer.speech_started"})";
    const std::string created = R"({"type":"response.created"})";
    const std::string done = R"({"type":"response.done"})";
    EXPECT_EQ(handled(make(), {speech, done, speech, created, created, speech, speech, done, speech}),
              (Lines{"turn", "interrupted", "interrupted", "turn"}));
}

TEST(OpenAIMessages, AFunctionCallIsNamedByItsItem) {
    const auto item = [](const std::string& members) {
        return R"({"type":"response.output_item.added","item":{"type":"function_call",)" + members + "}}";
    };
    const auto done = [](const std::string& members) {
        return R"({"type":"response.function_call_arguments.done",)" + members + "}";
    };
    EXPECT_EQ(
        handled(make(),
                {item(R"("call_id":"X","id":"Y","name":"first")"), item(R"("call_id":"X","name":"end_call")"),
                 done(R"("call_id":"X","name":"other","arguments":"{ \"reason\" : \"goal met\" }")"),
                 done(R"("call_id":"X","arguments":{"a":1})")}),
        (Lines{R"(tool X|end_call|{ "reason" : "goal met" })", "tool X|end_call|{}"}));
    EXPECT_EQ(handled(make(), {item(R"("id":"Y","call_id":5,"name":"a")"), item(R"("name":"b")"),
                               R"({"type":"response.output_item.added","item":{"type":"message","id":"Z"}})",
                               done(R"("call_id":"Y")"), done(R"("name":"c")"),
                               done(R"("call_id":"Z","name":"given","arguments":"")")}),
              (Lines{"tool Y|a|{}", "tool |b|{}", "tool Z|given|"}));
}

TEST(OpenAIMessages, ErrorsAreQuoted) {
    EXPECT_EQ(handled(make(), {R"({"type":"error", "error": {"code" : null,"message":"no\nway"}})",
                               R"({"type":"error"})", R"({"type":"error","error":"text"})"}),
              (Lines{R"(closed openai error: {"code":null,"message":"no\nway"})",
                     "closed openai error: ", R"(closed openai error: "text")"}));
}

TEST(OpenAIMessages, WhatIsMalformedOrUnknownStandsForNothing) {
    for (const std::string members :
         {R"("type":5)", R"("type":"Session.created")", R"("kind":"error")",
          R"("type":"response.audio.delta","delta":5)", R"("type":"response.audio.delta","delta":"QQ")",
          R"("type":"response.audio_transcript.delta","delta":"")",
          R"("type":"conversation.item.input_audio_transcription.completed")",
          R"("type":"rate_limits.updated")", R"("type":"response.output_item.done")"})
        EXPECT_EQ(handled(make(), {"{" + members + "}", R"({"type":"session.created"})"}), Lines{"setup"})
            << members;
}

} // namespace
} // namespace velto::test
