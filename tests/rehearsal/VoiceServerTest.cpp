// What the voice server refuses: requests, sessions and keys.
#include "rehearsal/server/VoiceServer.h"
#include "VeltoShared/voice/VoiceSocket.h"
#include "rehearsal/server/KeyChecks.h"
#include "tests/rehearsal/ClientTexts.h"
#include "tests/support/TrustedAuthority.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;
using Fields = std::vector<std::pair<std::string, std::string>>;
using Texts = std::vector<std::string>;

const ApiKeys kKeys{{VoiceProvider::gemini, "a key/&"}, {VoiceProvider::openai, "sk/+"}};
const Fields kOpenAIFields{{"Authorization", "Bearer sk/+"}, {"OpenAI-Beta", "realtime=v1"}};
const std::string kGeminiTarget = clientTexts(VoiceProvider::gemini).path + "?key=a%20key%2f%26";
const std::string kOpenAITarget = "/v1/realtime?model=gpt-4o-realtime-preview";

/// Server and client take turns on one thread.
struct VoiceServerTest : testing::Test {
    boost::asio::io_context context{1};
    Texts violations;
    std::string host;
    std::string ended;
    std::shared_ptr<WireTranscript> wire = std::make_shared<WireTranscript>(kKeys);
    std::unique_ptr<VoiceServer> server;

    VoiceServerTest() {
        const auto issued = test::trustedAuthority().issue("localhost");
        VoiceServerOptions options{issued.certificatePEM, issued.keyPEM, kKeys, {}, {}, wire};
        options.scenario.goal = "a table";
        options.scenario.lines = {{1, Side::callee, "Hello?"}};
        server = std::make_unique<VoiceServer>(std::move(options), [this](const json::object& report) {
            if (const auto* port = report.if_contains("port"))
                host = "localhost:" + json::serialize(*port);
            if (report.at("event") == "violation")
                violations.emplace_back(report.at("what").get_string());
        });
        boost::asio::co_spawn(context, server->serve(), boost::asio::detached);
        while (host.empty())
            context.run_one();
    }
    /// How the server ends a connection that begins with this request and these messages; empty when it does
    /// not.
    std::string answer(const std::string& target, const Fields& fields, const Texts& messages = {}) {
        ended.clear();
        boost::asio::co_spawn(
            context, talk(VoiceSocket::make(context.get_executor(), {host, target, fields}, {}), messages),
            [this](const std::exception_ptr&, std::string why) {
                ended = std::move(why);
                context.stop();
            });
        context.restart();
        context.run_for(std::chrono::seconds(10));
        return ended;
    }
    static asio::awaitable<std::string> talk(std::shared_ptr<VoiceSocket> socket, Texts messages) {
        const auto opened = co_await socket->open();
        if (!opened)
            co_return opened.error().description;
        for (const auto& message : messages)
            co_await socket->send(message);
        for (;;) {
            const auto received = co_await socket->receive();
            if (!received)
                co_return received.error().description;
        }
    }
};

TEST_F(VoiceServerTest, ViolationsCloseWithTheirCode) {
    const auto& gemini = clientTexts(VoiceProvider::gemini);
    const auto& openAI = clientTexts(VoiceProvider::openai);
    const std::vector<std::pair<Texts, std::string>> cases{
        {{gemini.configuration, "{"}, "code 1007"},
        {{openAI.configuration}, "code 1007"},
        {{gemini.audio}, "code 1008"},
        {{replaced(gemini.configuration, "a table", "a chair")}, "code 1008"}};
    for (const auto& [messages, code] : cases)
        EXPECT_NE(answer(kGeminiTarget, {}, messages).find(code), std::string::npos) << messages.back();
    EXPECT_NE(answer(kOpenAITarget, kOpenAIFields, {gemini.configuration}).find("code 1007"),
              std::string::npos);
    EXPECT_EQ(violations.size(), cases.size() + 1);
}

TEST_F(VoiceServerTest, OtherPathsKeysAndFieldsAreRefusedInTheHandshake) {
    const std::vector<std::tuple<std::string, Fields, const char*>> cases{
        {replaced(kGeminiTarget, "v1beta", "v1alpha"), {}, "HTTP 403"},
        {replaced(kGeminiTarget, "a%20key", "b%20key"), {}, "HTTP 403"},
        {kGeminiTarget + "&x=1", {}, "HTTP 403"},
        {kGeminiTarget, {{"Sec-WebSocket-Protocol", "x"}}, "HTTP 403"},
        {"/", {}, "HTTP 403"},
        {kOpenAITarget, {}, "HTTP 403"},
        {kOpenAITarget, {kOpenAIFields[0]}, "HTTP 403"},
        {kOpenAITarget, {kOpenAIFields[0], {"OpenAI-Beta", "realtime=v2"}}, "HTTP 403"},
        {kOpenAITarget, {{"Authorization", "sk/+"}, kOpenAIFields[1]}, "HTTP 403"},
        {kOpenAITarget, {{"Authorization", "Bearer sk/"}, kOpenAIFields[1]}, "HTTP 401"},
        {kOpenAITarget, {{"Authorization", "Bearer a key/&"}, kOpenAIFields[1]}, "HTTP 401"},
        {"/v1/realtime?model=", kOpenAIFields, "HTTP 403"},
        {kOpenAITarget + "&key=sk%2F%2B", kOpenAIFields, "HTTP 403"}};
    for (const auto& [target, fields, status] : cases)
        EXPECT_NE(answer(target, fields).find(status), std::string::npos) << target;
    EXPECT_EQ(violations.size(), cases.size());
    for (const auto* key : {"sk/+", "sk%2F%2B", "a key/&", "a%20key%2f%26"})
        EXPECT_EQ(wire->text().find(key), std::string::npos) << key;
}

TEST(KeyChecks, CompareTheKeyAndLeaveItOutOfTheTranscript) {
    WireTranscript wire(kKeys);
    for (const bool isRight : {true, false}) {
        const HttpRequest gemini{
            "GET", isRight ? "/v1beta/models?key=a%20key%2F%26" : "/v1beta/models?key=b", 11, {}, {}};
        const HttpRequest openAI{
            "POST",
            "/v1/chat/completions",
            11,
            {{"Content-Type", "application/json"}, {"Authorization", isRight ? "Bearer sk/+" : "Bearer b"}},
            R"({"model":"gpt-4o-mini","messages":[{"role":"user","content":"ping"}],"max_tokens":1})"};
        for (const auto& request : {gemini, openAI}) {
            wire.begin(request);
            const auto checked = answerKeyCheck(request, kKeys).value();
            EXPECT_EQ(checked.status, isRight ? 200U : 401U) << checked.complaint;
            EXPECT_EQ(json::parse(checked.body).as_object().contains("error"), !isRight);
        }
    }
    for (const auto* line : {"GET /v1beta/models?key=(key) HTTP/1.1\n", "Authorization: Bearer (key)\n",
                             "GET /v1beta/models?key=(another key) HTTP/1.1\n", "\"content\":\"ping\""})
        EXPECT_NE(wire.text().find(line), std::string::npos) << line << wire.text();
}

} // namespace
} // namespace velto::rehearsal
