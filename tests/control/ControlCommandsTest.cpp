// What each command answers, with and without the objects that it asks.
#include "VeltoApp/control/ControlCommands.h"

#include "tests/control/ControlFakes.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <gtest/gtest.h>

namespace velto::test {
namespace {

namespace json = boost::json;

class ControlCommandsTest : public ::testing::Test {
  protected:
    std::shared_ptr<FakeSession> session = std::make_shared<FakeSession>();
    std::shared_ptr<FakeAgent> agent = std::make_shared<FakeAgent>();
    std::shared_ptr<FakeReadiness> setup = std::make_shared<FakeReadiness>();
    ControlTargets targets{session, agent, setup};
    std::vector<CallRecord> calls;

    void expect(const std::string& request, const std::string& reply) {
        EXPECT_EQ(json::value(ControlCommands::handle(json::parse(request).get_object(), targets, calls)),
                  json::parse(reply))
            << request;
    }
};

TEST_F(ControlCommandsTest, reportsTheObjectsOrTheirAbsence) {
    session->isRunning = true;
    session->stateText = "live";
    session->dialled = "+1\xFF";
    session->session = 4;
    session->lines = {"Caller: hi", "Agent: hello"};
    expect(R"({"cmd":"ping"})", R"({"ok":true})");
    expect(
        R"({"cmd":"status"})",
        R"({"ok":true,"running":true,"state":"live","number":"+1\ufffd","session":4,"provider":"openai","ready":true})");
    expect(
        R"({"cmd":"readiness"})",
        R"({"ok":true,"accessibility":true,"microphone":true,"driver":true,"apiKeyValid":true,"gemini":true,"openai":false,"ready":true})");
    expect(R"({"cmd":"transcript"})", R"({"ok":true,"lines":["Caller: hi","Agent: hello"]})");
    setup->driver = false;
    expect(
        R"({"cmd":"readiness"})",
        R"({"ok":true,"accessibility":true,"microphone":true,"driver":false,"apiKeyValid":true,"gemini":true,"openai":false,"ready":false})");

    targets = {};
    expect(
        R"({"cmd":"status"})",
        R"({"ok":true,"running":false,"state":"idle","number":"","session":0,"provider":"","ready":false})");
    expect(
        R"({"cmd":"readiness"})",
        R"({"ok":true,"accessibility":false,"microphone":false,"driver":false,"apiKeyValid":false,"gemini":false,"openai":false,"ready":false})");
    expect(R"({"cmd":"transcript"})", R"({"ok":true,"lines":[]})");
    expect(R"({"cmd":"hangup"})", R"({"ok":true})");
    expect(R"({"cmd":"call"})", R"({"ok":false,"error":"not ready"})");
}

TEST_F(ControlCommandsTest, startsSessions) {
    session->stateText = "ended";
    expect(R"({"cmd":"call","number":"+1","goal":""})", R"({"ok":true,"state":"ended"})");
    expect(R"({"cmd":"watch","number":"+2","goal":"g"})", R"({"ok":false,"error":"busy"})");
    EXPECT_EQ(session->dialled, "+1");
    session->isRunning = false;
    expect(R"({"cmd":"call","number":"","goal":7})", R"({"ok":true,"state":"ended"})");
    session->isRunning = false;
    expect(R"({"cmd":"watch","number":2})", R"({"ok":true,"state":"ended"})");
    session->isRunning = false;
    session->startWorks = false;
    targets.agent.reset();
    expect(R"({"cmd":"watch","number":"+3"})", R"({"ok":true,"state":"error"})");
    EXPECT_EQ(session->starts, (std::vector<std::string>{"dial +1: ", "dial +1: the agent's goal",
                                                         "watch +1: the agent's goal", "watch +3: "}));
    expect(R"({"cmd":"hangup"})", R"({"ok":true})");
    EXPECT_EQ(session->stops, 1);
}

TEST_F(ControlCommandsTest, listsCallsAndProviders) {
    calls.push_back({.id = *UUID::parse("6f9619ff-8b86-d011-b42d-00c04fc964ff"),
                     .number = "+1",
                     .started = {816'553'400.75},
                     .duration = 61.5,
                     .transcript = "a\nb",
                     .recordingPath = "/p"});
    expect(
        R"({"cmd":"history"})",
        R"({"ok":true,"calls":[{"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","number":"+1","started":"2026-11-16T20:23:20Z","duration":61.5,"transcript":"a\nb"}]})");
    const auto reply = ControlCommands::handle({{"cmd", "providers"}}, targets, calls);
    EXPECT_EQ(reply.at("gemini"), true);
    EXPECT_EQ(reply.at("openai"), true);
    const auto& voices = reply.at("voices").as_object();
    EXPECT_EQ(voices.begin()->key(), "gemini");
    EXPECT_EQ(voices.at("gemini").as_array().size(), 30u);
    EXPECT_EQ(voices.at("openai").at(7), "verse");
}

TEST_F(ControlCommandsTest, namesAnUnknownCommand) {
    expect(R"({"cmd":"CALL"})", R"({"ok":false,"error":"unknown cmd 'CALL'"})");
    for (const auto* request : {"{}", R"({"cmd":7})", R"({"cmd":""})", R"({"Cmd":"ping"})"})
        expect(request, R"({"ok":false,"error":"unknown cmd ''"})");
}

} // namespace
} // namespace velto::test
