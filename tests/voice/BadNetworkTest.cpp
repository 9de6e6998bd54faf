// A session over a network that delays, stalls and cuts, on a hand-driven clock.
#include "tests/support/ManualClock.h"
#include "tests/support/UnreliableWire.h"
#include "tests/voice/VoiceFixture.h"

namespace velto {
namespace {

using namespace std::chrono_literals;
using test::Lines;
using test::ScriptedTlsServer;
using test::ServerPeer;
using test::ServerWords;
using test::UnreliableWire;

class BadNetworkTest : public testing::TestWithParam<VoiceProvider> {
  protected:
    static const ServerWords& words() { return ServerWords::of(GetParam()); }

    /// Runs the loop, waiting for the network but not for the clock, until `done`.
    template <class Done>
    void runUntil(Done done) {
        const auto giveUp = std::chrono::steady_clock::now() + 90s;
        while (!done() && std::chrono::steady_clock::now() < giveUp) {
            loop_.context.restart();
            loop_.context.run_one_for(10ms);
        }
        ASSERT_TRUE(done()) << "nothing came";
    }
    template <class T>
    std::shared_ptr<std::optional<T>> start(asio::awaitable<T> task) {
        auto answer = std::make_shared<std::optional<T>>();
        asio::co_spawn(loop_.context, std::move(task),
                       [answer](const std::exception_ptr&, T value) { answer->emplace(std::move(value)); });
        return answer;
    }
    void start(asio::awaitable<void> task) { asio::co_spawn(loop_.context, std::move(task), asio::detached); }
    bool connect(VoiceClient& session) {
        const auto connected = start(session.connect());
        runUntil([&] { return connected->has_value(); });
        return connected->has_value() && (*connected)->has_value();
    }
    std::string next(VoiceClient& session) {
        const auto event = start(session.events().next());
        runUntil([&] { return event->has_value(); });
        return **event ? test::text(***event) : "end";
    }
    /// What the server's thread promised; the loop goes on meanwhile.
    template <class T>
    T await(std::promise<T>& promise) {
        auto future = promise.get_future();
        runUntil([&] { return future.wait_for(0s) == std::future_status::ready; });
        return future.get();
    }
    void close(std::shared_ptr<VoiceClient>& session) {
        start(session->close());
        EXPECT_EQ(next(*session), "closed client closed");
        EXPECT_EQ(next(*session), "end");
        session.reset();
        loop_.drain();
    }

    // Trust is set up while there is one thread.
    LocalAuthority& authority_ = test::trustedAuthority();
    test::Loop loop_;
};

TEST_P(BadNetworkTest, AStallOfHalfAMinuteCostsNothingButTime) {
    std::promise<void> spoken;
    std::promise<std::size_t> received;
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        peer.read();
        peer.sendText(words().setupComplete);
        peer.read();
        peer.sendText(words().turnComplete);
        spoken.set_value();
        std::size_t frames = 0;
        for (auto frame = peer.read(); frame && frame->opcode != 8; frame = peer.read())
            ++frames;
        received.set_value(frames);
    });
    UnreliableWire wire(server.port());
    auto session = test::makeClient(GetParam(), wire.host());
    wire.hold();
    const auto connected = start(session->connect());
    loop_.advance(30s);
    EXPECT_FALSE(connected->has_value()) << "the opening waits";
    wire.release();
    runUntil([&] { return connected->has_value(); });
    ASSERT_TRUE(**connected);
    EXPECT_EQ(next(*session), "setup");

    const std::string pcm(640, 'x');
    start(session->sendAudio(std::as_bytes(std::span(pcm))));
    await(spoken);
    // The answer may be through already; what is said from here on is not.
    wire.hold();
    for (int i = 0; i < 5; ++i)
        start(session->sendAudio(std::as_bytes(std::span(pcm))));
    loop_.advance(30s);
    EXPECT_LE(session->events().waiting(), 1u);
    wire.release();
    EXPECT_EQ(next(*session), "turn") << "neither a failure nor a hole";
    close(session);
    EXPECT_EQ(await(received), 5u) << "what was said in the stall arrives after it";
}

TEST_P(BadNetworkTest, AnOpeningIsLimitedAndCanBeLeft) {
    ScriptedTlsServer server([](ServerPeer& peer) { peer.accept(); });
    UnreliableWire wire(server.port());
    wire.hold();
    auto session = test::makeClient(GetParam(), wire.host());
    auto connected = start(session->connect());
    loop_.advance(59s);
    EXPECT_FALSE(connected->has_value());
    loop_.advance(1s);
    runUntil([&] { return connected->has_value(); });
    EXPECT_EQ((*connected)->error().description, wire.host() + " did not answer in time");
    close(session);

    session = test::makeClient(GetParam(), wire.host());
    connected = start(session->connect());
    loop_.drain();
    close(session);
    runUntil([&] { return connected->has_value(); });
    EXPECT_EQ((*connected)->error().description, "the session was closed");
}

TEST_P(BadNetworkTest, AResetInTheMiddleOfAFrameLosesNothingBeforeIt) {
    std::promise<void> armed;
    ScriptedTlsServer server([&](ServerPeer& peer) {
        peer.accept();
        peer.read();
        peer.sendText(words().setupComplete);
        armed.get_future().wait();
        peer.sendText(words().turnComplete);
        peer.sendText(ServerWords::around(words().audio, std::string(4'000'000, 'A')));
        peer.drain();
    });
    UnreliableWire wire(server.port());
    auto session = test::makeClient(GetParam(), wire.host());
    ASSERT_TRUE(connect(*session));
    EXPECT_EQ(next(*session), "setup");
    wire.resetAfter(1'000'000);
    armed.set_value();
    EXPECT_EQ(next(*session), "turn");
    const auto closed = next(*session);
    EXPECT_TRUE(closed.starts_with("closed ")) << closed;
    EXPECT_NE(closed.find(wire.host()), std::string::npos) << closed;
    close(session);
}

INSTANTIATE_TEST_SUITE_P(Voice, BadNetworkTest, testing::ValuesIn(kAllVoiceProviders), test::providerName);

} // namespace
} // namespace velto
