// What each command answers, with and without the objects that it asks.
#include "tests/control/ServerFixture.h"

#include <boost/json/parse.hpp>

namespace velto::test {
namespace {

namespace json = boost::json;

class ControlCommandsTest : public ServerFixture {
  protected:
    void expect(const std::string& request, const std::string& reply) const {
        EXPECT_EQ(json::parse(ask(request + "\n")), json::parse(reply)) << request;
    }
};

TEST_F(ControlCommandsTest, reportsTheObjectsOrTheirAbsence) {
    onMain([&] {
        session->isRunning = true;
        session->stateText = "live";
        session->dialled = "+1\xFF";
        session->session = 4;
        session->lines = {"Caller: hi", "Agent: hello"};
    });
    expect(R"({"cmd":"ping"})", R"({"ok":true})");
    expect(
        R"({"cmd":"status"})",
        R"({"ok":true,"running":true,"state":"live","number":"+1\ufffd","session":4,"provider":"openai","ready":true})");
    expect(
        R"({"cmd":"readiness"})",
        R"({"ok":true,"accessibility":true,"microphone":true,"driver":true,"apiKeyValid":true,"gemini":true,"openai":false,"ready":true})");
    expect(R"({"cmd":"transcript"})", R"({"ok":true,"lines":["Caller: hi","Agent: hello"]})");

    // The server holds them weakly.
    onMain([&] {
        EXPECT_EQ(setup->looks, 2);
        session.reset();
        agent.reset();
        setup.reset();
    });
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
    onMain([&] { session->stateText = "ended"; });
    expect(R"({"cmd":"call","number":"+1","goal":""})", R"({"ok":true,"state":"ended"})");
    expect(R"({"cmd":"watch","number":"+2","goal":"g"})", R"({"ok":false,"error":"busy"})");
    onMain([&] { session->isRunning = false; });
    expect(R"({"cmd":"call","number":"","goal":7})", R"({"ok":true,"state":"ended"})");
    onMain([&] { session->isRunning = false; });
    expect(R"({"cmd":"watch","number":2})", R"({"ok":true,"state":"ended"})");
    onMain([&] {
        session->isRunning = session->startWorks = false;
        agent.reset();
    });
    expect(R"({"cmd":"watch","number":"+3"})", R"({"ok":true,"state":"error"})");
    expect(R"({"cmd":"hangup"})", R"({"ok":true})");
    onMain([&] {
        EXPECT_EQ(session->starts, (std::vector<std::string>{"dial +1: ", "dial +1: the agent's goal",
                                                             "watch +1: the agent's goal", "watch +3: "}));
        EXPECT_EQ(session->stops, 1);
    });
}

TEST_F(ControlCommandsTest, listsCallsAndProviders) {
    onMain([&] {
        history->records.set({{.id = *UUID::parse("6f9619ff-8b86-d011-b42d-00c04fc964ff"),
                               .number = "+1",
                               .started = {816'553'400.75},
                               .duration = 61.5,
                               .transcript = "a\nb",
                               .recordingPath = "/p"}});
    });
    expect(
        R"({"cmd":"history"})",
        R"({"ok":true,"calls":[{"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","number":"+1","started":"2026-11-16T20:23:20Z","duration":61.5,"transcript":"a\nb"}]})");
    const auto reply = json::parse(ask("{\"cmd\":\"providers\"}\n"));
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
