// The Gemini session against a real TLS server: a conversation, and every way in which a wire goes wrong.
#include "tests/voice/VoiceFixture.h"

#include <boost/asio/io_context.hpp>
#include <boost/json/parse.hpp>

namespace velto {
namespace {

using test::Lines;
using test::ScriptedTlsServer;
using test::ServerPeer;

class GeminiLiveClientTest : public test::VoiceFixture {};

constexpr std::string_view kSetupComplete = R"({"setupComplete":{}})";
constexpr std::string_view kTurnComplete = R"({"serverContent":{"turnComplete":true}})";

std::string audioMessage(std::size_t bytes) {
    return R"({"serverContent":{"modelTurn":{"parts":[{"inlineData":{"data":")" +
           std::string(bytes / 3 * 4, 'A') + R"("}}]}}})";
}

TEST_F(GeminiLiveClientTest, AConversation) {
    std::promise<Lines> heard;
    ScriptedTlsServer server([&](ServerPeer& peer) {
        Lines lines{peer.accept()};
        while (const auto frame = peer.read()) {
            lines.push_back(std::to_string(frame->opcode) + frame->payload);
            if (lines.size() == 2)
                peer.sendText(kSetupComplete);
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

    const auto lines = heard.get_future().get();
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_TRUE(lines[0].starts_with("GET /ws/google.ai.generativelanguage.v1beta.GenerativeService."
                                     "BidiGenerateContent?key=secret%20key HTTP/1.1\r\nHost: " +
                                     server.host() + "\r\n"))
        << lines[0];
    EXPECT_EQ(lines[0].find("Sec-WebSocket-Protocol"), std::string::npos);
    EXPECT_EQ(boost::json::parse(lines[1].substr(1)).at_pointer("/setup/model"), "models/model");
    EXPECT_EQ(lines[2], R"(1{"realtimeInput":{"audio":{"mimeType":"audio/pcm;rate=16000","data":"YWJj"}}})");
    EXPECT_EQ(boost::json::parse(lines[3].substr(1)).at_pointer("/clientContent/turns/0/parts/0/text"),
              "Greet.");
    EXPECT_EQ(boost::json::parse(lines[4].substr(1)).at_pointer("/toolResponse/functionResponses/0/response"),
              boost::json::object{});
    EXPECT_EQ(lines[5], "8\x03\xE8");
}

TEST_F(GeminiLiveClientTest, FramesOfEveryKind) {
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        peer.sendText(R"({"setupComplete":)");
        peer.sendBinary(kSetupComplete);
        peer.send(ServerPeer::frame(9, "ping"));
        const auto half = kTurnComplete.size() / 2;
        peer.send(ServerPeer::frame(1, kTurnComplete.substr(0, half), false));
        peer.send(ServerPeer::frame(9, ""));
        peer.send(ServerPeer::frame(0, kTurnComplete.substr(half)));
        peer.sendBytewise(ServerPeer::frame(1, kSetupComplete));
        peer.sendBinary("{\"serverContent\":{\"inputTranscription\":{\"text\":\"a\xFF\"}}}");
        peer.sendText(R"({"goAway":{"timeLeft":"1s"}})");
        peer.sendText(audioMessage(15'000'000));
        peer.sendText(kTurnComplete);
        peer.readUntilClosed();
    });
    const auto session = client(server.host());
    ASSERT_TRUE(run(session->connect()));
    EXPECT_EQ(next(*session, 5), (Lines{"setup", "turn", "setup", "caller a\xEF\xBF\xBD", "closed goAway"}));
    EXPECT_EQ(next(*session).size(), 6 + 15'000'000u);
    EXPECT_EQ(next(*session), "turn");
    run(session->close());
}

TEST_F(GeminiLiveClientTest, LostConnectionsAreDescribed) {
    struct Case {
        const char* name;
        ScriptedTlsServer::Script script;
        std::string reason; ///< after "closed " and the host; "*" for any
    };
    const Case cases[] = {
        {"code and reason",
         [](ServerPeer& peer) {
             peer.send(ServerPeer::frame(8, "\x03\xF0"
                                            "bad\nsecret key"));
             peer.drain();
         },
         " closed the connection with code 1008: bad (key)"},
        {"no code",
         [](ServerPeer& peer) {
             peer.send(ServerPeer::frame(8, ""));
             peer.drain();
         },
         " closed the connection without a code"},
        {"close in mid-message",
         [](ServerPeer& peer) { peer.send(ServerPeer::frame(1, "{\"setup", true, 1000)); },
         " ended the connection without closing it"},
        {"reset", [](ServerPeer& peer) { peer.reset(); }, "*"},
        {"too long",
         [](ServerPeer& peer) {
             peer.send(ServerPeer::frame(1, "{", true, std::uint64_t{1} << 40));
             peer.drain();
         },
         "*"},
        {"broken text",
         [](ServerPeer& peer) {
             peer.sendText("\xFF");
             peer.drain();
         },
         "*"},
        {"not a frame",
         [](ServerPeer& peer) {
             peer.send("HTTP/1.1 500 Oh no\r\n\r\n");
             peer.drain();
         },
         "*"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        ScriptedTlsServer server([&](ServerPeer& peer) {
            peer.accept();
            peer.read();
            peer.sendText(kSetupComplete);
            each.script(peer);
        });
        const auto session = client(server.host());
        ASSERT_TRUE(run(session->connect()));
        EXPECT_EQ(next(*session), "setup");
        const auto closed = next(*session);
        EXPECT_TRUE(closed.starts_with("closed ")) << closed;
        EXPECT_NE(closed.find(server.host()), std::string::npos) << closed;
        EXPECT_EQ(closed.find("key="), std::string::npos);
        if (each.reason != "*") {
            EXPECT_EQ(closed, "closed " + server.host() + each.reason);
        }
        run(session->sendAudio(bytes("lost")));
        run(session->close());
        EXPECT_EQ(next(*session, 2), (Lines{"closed client closed", "end"}));
    }
}

TEST_F(GeminiLiveClientTest, OnlyTheNewestUnreadEventsAreKept) {
    std::promise<void> handled;
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        for (int i = 0; i < 5000; ++i)
            peer.sendText(R"({"serverContent":{"outputTranscription":{"text":")" + std::to_string(i) +
                          R"("}}})");
        // The answer comes when everything before has been handled.
        peer.send(ServerPeer::frame(9, "done?"));
        peer.readUntil(10);
        handled.set_value();
        peer.readUntilClosed();
    });
    const auto session = client(server.host());
    ASSERT_TRUE(run(session->connect()));
    handled.get_future().wait();
    EXPECT_EQ(session->events().waiting(), kVoiceEventCapacity);
    EXPECT_EQ(next(*session), "agent 4488");
    EXPECT_EQ(next(*session, 511).back(), "agent 4999");
    run(session->close());
}

TEST_F(GeminiLiveClientTest, APeerThatStopsReadingCostsNoMemoryAndNoTimeAtTheEnd) {
    std::promise<void> done;
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        done.get_future().wait();
    });
    VoiceSocket::Limits limits;
    limits.closing = std::chrono::milliseconds(50);
    const auto session = client(server.host(), limits);
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
    done.set_value();
}

TEST_F(GeminiLiveClientTest, MayGoAtAnyTime) {
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        peer.readUntilClosed();
    });
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

TEST_F(GeminiLiveClientTest, ResumesWhereItWasAwaited) {
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        peer.readUntilClosed();
    });
    const auto session = client(server.host());
    asio::io_context elsewhere;
    int steps = 0;
    const auto converse = [](VoiceSession& one, int& step) -> asio::awaitable<void> {
        const auto here = std::this_thread::get_id();
        const auto connected = co_await one.connect();
        step += connected && here == std::this_thread::get_id();
        co_await one.sendClientText("x");
        step += here == std::this_thread::get_id();
        co_await one.close();
        step += here == std::this_thread::get_id();
    };
    asio::co_spawn(elsewhere, converse(*session, steps), asio::detached);
    elsewhere.run();
    EXPECT_EQ(steps, 3);
}

} // namespace
} // namespace velto
