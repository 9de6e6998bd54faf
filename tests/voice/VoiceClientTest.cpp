// The shared client against a real TLS server: a conversation, and every way in which a wire goes wrong.
#include "tests/voice/VoiceFixture.h"

#include <boost/asio/io_context.hpp>
#include <boost/json/parse.hpp>

namespace velto {
namespace {

using test::Lines;
using test::ScriptedTlsServer;
using test::ServerPeer;
using test::ServerWords;

class VoiceClientTest : public test::ProviderFixture {};

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

    auto lines = heard.get_future().get();
    const auto request = lines[0];
    EXPECT_EQ(request.find("Sec-WebSocket-Protocol"), std::string::npos);
    EXPECT_NE(request.find("\r\nHost: " + server.host() + "\r\n"), std::string::npos);
    EXPECT_EQ(lines[1].substr(0, 2), "1{");
    lines.erase(lines.begin(), lines.begin() + 2);
    if (GetParam() == VoiceProvider::gemini) {
        EXPECT_TRUE(request.starts_with("GET /ws/google.ai.generativelanguage.v1beta.GenerativeService."
                                        "BidiGenerateContent?key=secret%20%22key%22%2F%26 HTTP/1.1\r\n"))
            << request;
        EXPECT_EQ(request.find("Authorization"), std::string::npos);
        EXPECT_EQ(
            lines,
            (Lines{R"(1{"realtimeInput":{"audio":{"mimeType":"audio/pcm;rate=16000","data":"YWJj"}}})",
                   R"(1{"clientContent":{"turns":[{"role":"user","parts":[{"text":"Greet."}]}],)"
                   R"("turnComplete":true}})",
                   R"(1{"toolResponse":{"functionResponses":[{"id":"7","name":"end_call","response":{}}]}})",
                   "8\x03\xE8"}));
    } else {
        EXPECT_TRUE(request.starts_with("GET /v1/realtime?model=a%20model HTTP/1.1\r\n")) << request;
        EXPECT_NE(request.find("\r\nAuthorization: Bearer secret \"key\"/&\r\n"), std::string::npos);
        EXPECT_NE(request.find("\r\nOpenAI-Beta: realtime=v1\r\n"), std::string::npos);
        EXPECT_EQ(lines,
                  (Lines{R"(1{"type":"input_audio_buffer.append","audio":"YWJj"})",
                         R"(1{"type":"conversation.item.create","item":{"type":"message","role":"user",)"
                         R"("content":[{"type":"input_text","text":"Greet."}]}})",
                         R"(1{"type":"response.create"})",
                         R"(1{"type":"conversation.item.create","item":{"type":"function_call_output",)"
                         R"("call_id":"7","output":"nonsense"}})",
                         R"(1{"type":"response.create"})", "8\x03\xE8"}));
    }
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
        ScriptedTlsServer::Script script;
        std::string reason; ///< after "closed " and the host; "*" for any
    };
    const Case cases[] = {
        {"code and reason",
         [](ServerPeer& peer) {
             peer.send(ServerPeer::frame(8, "\x03\xF0"
                                            "bad\n" +
                                                std::string(test::kSecret)));
             peer.drain();
         },
         " closed the connection with code 1008: bad (key)"},
        {"the key as it stood in the request",
         [](ServerPeer& peer) {
             peer.send(ServerPeer::frame(8, "\x03\xF3"
                                            "no secret%20%22key%22%2F%26 here"));
             peer.drain();
         },
         " closed the connection with code 1011: no (key) here"},
        {"a code that may not be sent",
         [](ServerPeer& peer) {
             peer.send(ServerPeer::frame(8, "\x03\xEE"));
             peer.drain();
         },
         "*"},
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
            peer.sendText(words().setupComplete);
            each.script(peer);
        });
        const auto session = client(server.host());
        ASSERT_TRUE(run(session->connect()));
        EXPECT_EQ(next(*session), "setup");
        const auto closed = next(*session);
        EXPECT_TRUE(closed.starts_with("closed ")) << closed;
        EXPECT_NE(closed.find(server.host()), std::string::npos) << closed;
        EXPECT_EQ(closed.find("secret"), std::string::npos) << closed;
        if (each.reason != "*") {
            EXPECT_EQ(closed, "closed " + server.host() + each.reason);
        }
        run(session->sendAudio(bytes("lost")));
        run(session->close());
        EXPECT_EQ(next(*session, 2), (Lines{"closed client closed", "end"}));
    }
}

TEST_P(VoiceClientTest, OnlyTheNewestUnreadEventsAreKept) {
    std::promise<void> handled;
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        for (int i = 0; i < 5000; ++i)
            peer.sendText(ServerWords::around(words().agentText, std::to_string(i)));
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

TEST_P(VoiceClientTest, APeerThatStopsReadingCostsNoMemoryAndNoTimeAtTheEnd) {
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

TEST_P(VoiceClientTest, ANetworkThatTakesNothingIsNoticed) {
    std::promise<void> done;
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        done.get_future().wait();
    });
    VoiceSocket::Limits limits;
    limits.unacknowledged = std::chrono::milliseconds(1);
    const auto session = client(server.host(), limits);
    ASSERT_TRUE(run(session->connect()));
    const std::string pcm(8'000'000, 'x');
    run(session->sendAudio(bytes(pcm)));
    EXPECT_EQ(next(*session),
              "closed the connection to " + server.host() + " was lost: Connection timed out");
    run(session->close());
    done.set_value();
}

TEST_P(VoiceClientTest, MayGoAtAnyTime) {
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

TEST_P(VoiceClientTest, ResumesWhereItWasAwaited) {
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

INSTANTIATE_TEST_SUITE_P(Voice, VoiceClientTest, testing::ValuesIn(kAllVoiceProviders), test::providerName);

} // namespace
} // namespace velto
