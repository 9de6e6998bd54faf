// The shared client against a real TLS server: a conversation, and every way in which a wire goes wrong.
#include "tests/voice/VoiceFixture.h"

#include <boost/asio/io_context.hpp>

namespace velto::test {
namespace {

class VoiceClientTest : public VoiceFixture, public testing::WithParamInterface<VoiceProvider> {
  protected:
    static std::shared_ptr<VoiceClient> client(const std::string& host, VoiceSocket::Limits limits = {}) {
        return makeClient(GetParam(), host, limits);
    }
    static const ServerWords& words() { return ServerWords::of(GetParam()); }
};

TEST_P(VoiceClientTest, AConversation) {
    std::promise<Lines> heard;
    ScriptedTlsServer server([&](ServerPeer& peer) {
        Lines lines{peer.accept()};
        while (const auto frame = peer.read()) {
            lines.push_back(std::to_string(frame->opcode) + frame->payload);
            if (lines.size() == 2)
                peer.sendText(words().setupComplete);
        }
        heard.set_value(lines);
    });
    const auto session = client(server.host());
    run(session->sendAudio(bytes("early")));
    EXPECT_FALSE(session->isReady());
    ASSERT_TRUE(run(session->connect()));
    EXPECT_EQ(next(*session), "setup");
    EXPECT_TRUE(session->isReady());
    run(session->sendAudio(bytes("abc")));
    run(session->sendClientText("Greet."));
    run(session->sendToolResponse("7", "end_call", "nonsense"));
    run(session->close());
    run(session->sendAudio(bytes("late")));
    run(session->close());
    EXPECT_EQ(next(*session, 2), (Lines{"closed client closed", "end"}));
    EXPECT_EQ(run(session->connect()).error().code, kErrorNotConnected);

    // The setup, "abc", the turn and the answer in the messages of the provider, and the end.
    const auto lines = heard.get_future().get();
    const auto turn = GetParam() == VoiceProvider::gemini ? 1u : 2u;
    ASSERT_EQ(lines.size(), 4 + 2 * turn);
    EXPECT_EQ(lines[0].find("Sec-WebSocket-Protocol"), std::string::npos);
    EXPECT_EQ(lines[1].substr(0, 2), "1{");
    EXPECT_NE(lines[2].find("\"YWJj\""), std::string::npos) << "what was sent early is not kept";
    EXPECT_NE(lines[3].find("Greet."), std::string::npos);
    EXPECT_NE(lines[3 + turn].find("\"7\""), std::string::npos);
    EXPECT_EQ(lines.back(), "8\x03\xE8");
}

TEST_P(VoiceClientTest, FramesOfEveryKind) {
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        peer.sendText(words().setupComplete.substr(1));
        peer.sendBinary(words().setupComplete);
        peer.send(ServerPeer::frame(9, "ping"));
        const auto half = words().turnComplete.size() / 2;
        peer.send(ServerPeer::frame(1, words().turnComplete.substr(0, half), false));
        peer.send(ServerPeer::frame(9, ""));
        peer.send(ServerPeer::frame(0, words().turnComplete.substr(half)));
        peer.sendBytewise(ServerPeer::frame(1, words().setupComplete));
        peer.sendBinary(ServerWords::around(words().callerText, "a\xFF"));
        // 15 MiB in one message.
        peer.sendText(ServerWords::around(words().audio, std::string(std::size_t{15} << 20, 'A')));
        peer.sendText(words().turnComplete);
        peer.readUntilClosed();
    });
    const auto session = client(server.host());
    ASSERT_TRUE(run(session->connect()));
    EXPECT_EQ(next(*session, 4), (Lines{"setup", "turn", "setup", "caller a\xEF\xBF\xBD"}));
    EXPECT_EQ(next(*session).size(), std::string("audio ").size() + (std::size_t{15} << 20) / 4 * 3);
    EXPECT_EQ(next(*session), "turn");
    run(session->close());
}

TEST_P(VoiceClientTest, LostConnectionsAreDescribed) {
    struct Case {
        const char* name;
        std::string bytes;                   ///< what the server sends in the end
        std::optional<std::string> reason{}; ///< after "closed " and the host; none for any
        void (*then)(ServerPeer&) = [](ServerPeer& peer) { peer.drain(); };
    };
    using namespace std::string_literals;
    const auto closing = [](const std::string& payload) { return ServerPeer::frame(8, payload); };
    const std::string closed = " closed the connection with";
    const Case cases[] = {
        {"code and reason", closing("\x03\xF0"s + "bad\n" + std::string(kSecret)),
         closed + " code 1008: bad (key)"},
        {"the key as it stood in the request", closing("\x03\xF3no secret%20%22key%22%2F%26 here"),
         closed + " code 1011: no (key) here"},
        {"a code that may not be sent", closing("\x03\xEE")},
        {"no code", closing(""), closed + "out a code"},
        {"close in mid-message", ServerPeer::frame(1, "{\"setup", true, 1000),
         " ended the connection without closing it", [](ServerPeer&) {}},
        {"reset in mid-message",
         ServerPeer::frame(1, "{\"setup", true, 1000),
         {},
         [](ServerPeer& peer) { peer.reset(); }},
        {"too long", ServerPeer::frame(1, "{", true, std::uint64_t{1} << 40)},
        {"broken text", ServerPeer::frame(1, "\xFF")},
        {"not a frame", "HTTP/1.1 500 Oh no\r\n\r\n"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        ScriptedTlsServer server([&](ServerPeer& peer) {
            peer.accept();
            peer.read();
            peer.sendText(words().setupComplete);
            peer.send(each.bytes);
            each.then(peer);
        });
        const auto session = client(server.host());
        ASSERT_TRUE(run(session->connect()));
        EXPECT_EQ(next(*session), "setup");
        const auto said = next(*session);
        EXPECT_TRUE(said.starts_with("closed ")) << said;
        EXPECT_NE(said.find(server.host()), std::string::npos) << said;
        EXPECT_EQ(said.find("secret"), std::string::npos) << said;
        EXPECT_TRUE(!each.reason || said == "closed " + server.host() + *each.reason) << said;
        run(session->sendAudio(bytes("lost")));
        run(session->close());
        EXPECT_EQ(next(*session, 2), (Lines{"closed client closed", "end"}));
    }
}

/// Takes the connection and reads nothing.
struct DeafServer {
    std::promise<void> done;
    ScriptedTlsServer server{[this](ServerPeer& peer) {
        peer.accept();
        done.get_future().wait();
    }};
    ~DeafServer() { done.set_value(); }
};

TEST_P(VoiceClientTest, APeerThatStopsReadingCostsNoMemoryAndNoTimeAtTheEnd) {
    const DeafServer deaf;
    VoiceSocket::Limits limits;
    limits.closing = std::chrono::milliseconds(50);
    const auto session = client(deaf.server.host(), limits);
    ASSERT_TRUE(run(session->connect()));
    const std::string pcm(30'000, 'x');
    // All at once: most find eight waiting and are dropped, the others end with the session.
    std::vector<std::future<void>> sends;
    for (int i = 0; i < 1000; ++i)
        sends.push_back(
            asio::co_spawn(Background::executor(), session->sendAudio(bytes(pcm)), asio::use_future));
    std::size_t pending = sends.size();
    while (pending > 9) {
        pending = 0;
        for (auto& each : sends)
            pending += each.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready;
    }
    run(session->close());
    EXPECT_EQ(next(*session, 2), (Lines{"closed client closed", "end"}));
    for (auto& each : sends)
        EXPECT_EQ(each.wait_for(std::chrono::seconds(60)), std::future_status::ready);
}

TEST_P(VoiceClientTest, ANetworkThatTakesNothingIsNoticed) {
    const DeafServer deaf;
    VoiceSocket::Limits limits;
    limits.unacknowledged = std::chrono::milliseconds(1);
    const auto session = client(deaf.server.host(), limits);
    ASSERT_TRUE(run(session->connect()));
    const std::string pcm(8'000'000, 'x');
    run(session->sendAudio(bytes(pcm)));
    EXPECT_EQ(next(*session),
              "closed the connection to " + deaf.server.host() + " was lost: Connection timed out");
    run(session->close());
}

TEST_P(VoiceClientTest, MayGoAtAnyTime) {
    const ScriptedTlsServer server(listenToTheEnd);
    // Before connecting, while connecting, while receiving: the server sees the end each time.
    client(server.host()).reset();
    auto connecting = client(server.host());
    auto connected = asio::co_spawn(Background::executor(), connecting->connect(), asio::use_future);
    connecting.reset();
    const auto result = connected.get();
    if (!result) {
        EXPECT_EQ(result.error().description, "the session was closed");
    }
    for (int i = 0; i < 3; ++i) {
        auto receiving = client(server.host());
        ASSERT_TRUE(run(receiving->connect()));
        receiving.reset();
    }
    // The server takes one connection after the other, so this one shows that the earlier ones have ended.
    const auto last = client(server.host());
    EXPECT_TRUE(run(last->connect()));
    run(last->close());
}

TEST_P(VoiceClientTest, ResumesWhereItWasAwaited) {
    const ScriptedTlsServer server(listenToTheEnd);
    const auto session = client(server.host());
    asio::io_context elsewhere;
    const auto converse = [](VoiceSession& one) -> asio::awaitable<void> {
        const auto here = std::this_thread::get_id();
        EXPECT_TRUE(co_await one.connect());
        EXPECT_EQ(std::this_thread::get_id(), here);
        co_await one.sendClientText("x");
        EXPECT_EQ(std::this_thread::get_id(), here);
        co_await one.close();
        EXPECT_EQ(std::this_thread::get_id(), here);
    };
    asio::co_spawn(elsewhere, converse(*session), asio::detached);
    elsewhere.run();
}

INSTANTIATE_TEST_SUITE_P(Voice, VoiceClientTest, testing::ValuesIn(kAllVoiceProviders), providerName);

} // namespace
} // namespace velto::test
