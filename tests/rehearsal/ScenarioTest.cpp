// Scenarios that cannot be played are refused with a clear word, and calls that went wrong with another.
#include "rehearsal/director/Verdict.h"
#include "rehearsal/scenario/ScenarioFile.h"

#include <boost/json.hpp>

#include <gtest/gtest.h>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;
using namespace std::chrono_literals;

const std::string kGood = R"({"name":"n","about":"a","number":"1","goal":"g","ends":"agent","lines":[
  {"mark":1,"side":"callee","text":"Hello?"},
  {"mark":2,"side":"agent","text":"A long story begins here."},
  {"mark":3,"side":"callee","text":"Stop.","over":1.5},
  {"mark":4,"side":"agent","text":"Bye."}]})";

std::string messageOf(const std::string& text) {
    const auto scenario = parseScenario(text);
    return scenario ? "good" : scenario.error().message;
}

std::string with(const std::string& from, const std::string& to) {
    auto text = kGood;
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

TEST(ScenarioFile, MistakesAreNamedByTheirPlace) {
    EXPECT_EQ(messageOf(kGood), "good");
    const std::vector<std::pair<std::string, std::string>> cases{
        {"{", "not JSON"},
        {"[]", "scenario is not an object"},
        {with("\"goal\":\"g\",", ""), "scenario.goal is missing"},
        {with("\"mark\":3", "\"mark\":1"), "scenario.lines[2].mark is used twice"},
        {with("\"mark\":3", "\"mark\":100"), "scenario.lines[2].mark is not a whole number"},
        {with("\"mark\":3,\"side\":\"callee\"", "\"mark\":3,\"side\":\"agent\""), "scenario.lines[2]"},
        {with("Hello?\"", "Hello?\",\"over\":1"), "scenario.lines[0]: there is no line before it"},
        {with("Bye.\"", "Bye.\",\"pause\":1"), "scenario.lines[3]: \"pause\", \"over\" and"},
        {with("Stop.\"", "Stop.\",\"pause\":1,\"after\":\"sound restart\""),
         "scenario.lines[2].after needs a pause of at least 3 s"},
        {with("Bye.", "Bye. "), "scenario.lines[3].text has blanks at an end"},
        {with("\"ends\":\"agent\"", "\"ends\":\"callee\""), "scenario.lines must end with the callee"},
        {with("\"ends\":\"agent\"", "\"ends\":\"no answer\""),
         "scenario.lines must be one line of the agent"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_TRUE(messageOf(text).starts_with(expected)) << messageOf(text) << " instead of " << expected;
}

const json::object kAnswered{{"event", "answered"}, {"at", 1}};
const json::object kEnded{{"event", "ended"}, {"reason", "hung up by the caller"}};

Evidence::HeardMark endOf(int mark) {
    return {{mark, Mark::Place::end}, {}};
}

std::string record(const std::string& secondLine) {
    return "Caller: Hello?\n" + secondLine + "\nCaller: Stop.\nAgent: Bye.";
}

/// The evidence of a call that went as `kGood` says.
Evidence goodEvidence() {
    Evidence evidence;
    const auto heard = [](int mark, bool whole) {
        return json::object{{"event", "heard"}, {"mark", mark}, {"whole", whole}, {"at", 1}};
    };
    const auto timed = [](const char* event, std::chrono::milliseconds at, int mark = 0) {
        return json::object{{"event", event}, {"at", std::chrono::nanoseconds(at).count()}, {"mark", mark}};
    };
    evidence.expectedProvider = VoiceProvider::openai;
    evidence.isRecorded = true;
    evidence.recording = Recording{1, {{3, Mark::Place::begin}, {3, Mark::Place::end}}};
    evidence.searchedForKeys = {kApplicationTitle, kPhoneTitle};
    evidence.storedKeys = {VoiceProvider::gemini, VoiceProvider::openai};
    for (const char* provider : {"gemini", "openai"})
        evidence.fromServer({{"event", "keyCheck"}, {"provider", provider}, {"status", 200}});
    evidence.fromServer({{"event", "connected"}, {"provider", "openai"}});
    evidence.fromCallee({{"event", "dialled"}, {"number", "1"}});
    evidence.fromCallee(kAnswered);
    evidence.fromCallee(timed("says", 0s, 1));
    for (const bool whole : {false, true})
        evidence.fromServer(heard(1, whole));
    evidence.fromCallee(timed("said", 1000ms));
    evidence.fromServer(timed("speaks", 1500ms, 2));
    evidence.fromCallee(timed("soundBegins", 1600ms));
    evidence.fromCallee(heard(2, false));
    evidence.fromCallee(timed("says", 2000ms, 3));
    evidence.fromServer(timed("interrupted", 2100ms, 2));
    evidence.fromCallee(timed("soundEnds", 2150ms));
    for (const bool whole : {false, true})
        evidence.fromServer(heard(3, whole));
    evidence.fromCallee(timed("said", 3000ms));
    evidence.fromServer(timed("speaks", 3500ms, 4));
    evidence.fromCallee(timed("soundBegins", 3700ms));
    for (const bool whole : {false, true})
        evidence.fromCallee(heard(4, whole));
    evidence.fromServer(timed("endCall", 4000ms));
    evidence.fromServer(
        {{"event", "closed"}, {"code", 1000}, {"toolAnswered", true}, {"framesIn", 7}, {"peakIn", 8}});
    evidence.fromCallee(kEnded);
    evidence.record = CallEntry{"1", record("Agent: A long"), 4};
    evidence.defaultsBefore = evidence.defaultsAfter = {"Microphone", "Speaker"};
    return evidence;
}

TEST(Verdict, AGoodCallIsGoodAndItsTimesAreMeasured) {
    const auto evidence = goodEvidence();
    EXPECT_EQ(faults(*parseScenario(kGood), evidence), std::vector<std::string>{});
    ASSERT_EQ(evidence.responseSeconds().size(), 2U);
    EXPECT_NEAR(evidence.responseSeconds()[0], 0.6, 1e-9);
    EXPECT_NEAR(evidence.responseSeconds()[1], 0.7, 1e-9);
    ASSERT_EQ(evidence.soundAfterInterruptionSeconds().size(), 1U);
    EXPECT_NEAR(evidence.soundAfterInterruptionSeconds()[0], 0.05, 1e-9);
}

TEST(Verdict, WhateverIsMissingIsSaid) {
    const auto scenario = *parseScenario(kGood);
    const std::vector<std::pair<std::function<void(Evidence&)>, std::string>> cases{
        {[](Evidence& e) { e.heardByServer.pop_back(); }, "the agent did not hear the end of line 3"},
        {[](Evidence& e) { e.heardByCallee.erase(e.heardByCallee.begin()); },
         "the callee did not hear line 2"},
        {[](Evidence& e) { e.heardByCallee.insert(e.heardByCallee.begin() + 1, endOf(2)); },
         "the callee heard line 2 (\"A long story begins here.\") to its end"},
        {[](Evidence& e) { std::swap(e.heardByServer.front(), e.heardByServer.back()); },
         "the agent heard the lines in another order"},
        {[](Evidence& e) { e.heardByCallee.push_back(endOf(77)); },
         "the callee heard line 77, which should not"},
        {[](Evidence& e) { e.spoken.pop_back(); }, "never said, because nothing led to it: line 4"},
        {[](Evidence& e) { e.violations.emplace_back("x"); }, "the voice server refused the application: x"},
        {[](Evidence& e) { e.interruptions.clear(); },
         "the voice server noticed 0 interruptions instead of 1"},
        {[](Evidence& e) { e.interruptions[0] -= 1s; }, "after an interruption the callee still heard"},
        {[](Evidence& e) { e.interruptions[0] += 2s; },
         "after an interruption the sound at the callee never ended"},
        {[](Evidence& e) { e.fromCallee(kEnded); }, "the line was ended 2 times instead of 1"},
        {[](Evidence& e) { e.fromCallee(kAnswered); }, "the line was answered 2 times instead of 1"},
        {[](Evidence& e) { e.wrongEnds = {"velto was killed"}; }, "velto was killed"},
        {[](Evidence& e) { e.ended = "no answer"; }, "the call ended with \"no answer\""},
        {[](Evidence& e) { e.ended.reset(); }, "the line was still open"},
        {[](Evidence& e) { e.dialled = "2"; }, "the phone dialled 2 instead of 1"},
        {[](Evidence& e) { e.endCallAnswered = false; }, "the model's call of end_call was not answered"},
        {[](Evidence& e) { e.record.reset(); }, "the history has no record"},
        {[](Evidence& e) { e.record->transcript += "\nAgent: Bye."; },
         "the record goes on with \"Agent: Bye.\""},
        {[](Evidence& e) { e.record->transcript = record("Agent: "); }, "the record's line 2 is"},
        {[](Evidence& e) { e.record->transcript = record("Agent: A long story begins here."); },
         "the record's line 2 is"},
        {[](Evidence& e) { e.sessions = {VoiceProvider::gemini}; },
         "the call was held by Gemini Live instead of OpenAI Realtime"},
        {[](Evidence& e) { e.keyChecks.back().status = 401; },
         "the check of the key for OpenAI Realtime was answered with 401 instead of 200"},
        {[](Evidence& e) { e.keyChecks.pop_back(); },
         "OpenAI Realtime was not asked whether it accepts the key"},
        {[](Evidence& e) { e.storedKeys.erase(VoiceProvider::gemini); },
         "Gemini Live was asked about a key, and none is stored"},
        {[](Evidence& e) { e.placesWithKey = {"the file log"}; }, "an API key can be read in the file log"},
        {[](Evidence& e) { e.searchedForKeys.erase(kPhoneTitle); },
         "nobody could look for the API keys in the command line of the phone app"},
        {[](Evidence& e) { e.tapWanted = true; }, "the application did not tap the phone app"},
        {[](Evidence& e) { e.recording.reset(); }, "the call was not recorded"},
        {[](Evidence& e) { e.recording->heard.pop_back(); }, "the recording lacks a part of line 3"},
        {[](Evidence& e) { e.recording->heard.push_back(endOf(2).mark); },
         "the recording holds line 2, which the agent did not hear"},
        {[](Evidence& e) { e.longestHold = 0.6; }, "the application took 600 ms to answer"},
        {[](Evidence& e) { e.closeCode = 1006; },
         "the application left the voice server with close code 1006"},
        {[](Evidence& e) { e.defaultsAfter.output = "VeltoLoop 2ch"; }, "the default devices are"},
    };
    for (const auto& [spoil, expected] : cases) {
        auto evidence = goodEvidence();
        spoil(evidence);
        const auto found = faults(scenario, evidence);
        ASSERT_FALSE(found.empty()) << expected;
        EXPECT_TRUE(found.front().starts_with(expected)) << found.front() << " instead of " << expected;
    }
}

TEST(Verdict, ATroubleThatWasNeverMadeIsAFault) {
    auto scenario = *parseScenario(kGood);
    scenario.lines[2].after = Trouble::phoneStops;
    auto evidence = goodEvidence();
    EXPECT_EQ(
        faults(scenario, evidence),
        std::vector<std::string>{"the phone app was not made to stand still before line 3 (\"Stop.\")"});
    evidence.troubledBefore.insert(3);
    EXPECT_EQ(faults(scenario, evidence), std::vector<std::string>{});
}

} // namespace
} // namespace velto::rehearsal
