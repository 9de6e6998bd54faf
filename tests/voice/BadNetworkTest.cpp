// A session over a network that delays and stalls, on a hand-driven clock.
#include "tests/support/UnreliableWire.h"
#include "tests/voice/VoiceFixture.h"

namespace velto::test {
namespace {

using namespace std::chrono_literals;

class BadNetworkTest : public NetworkLoop, public testing::WithParamInterface<VoiceProvider> {
  protected:
    static const ServerWords& words() { return ServerWords::of(GetParam()); }

    std::string next(VoiceClient& session) {
        const auto event = start(session.events().next());
        runUntil([&] { return event->has_value(); });
        return **event ? text(***event) : "end";
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
        loop.drain();
    }
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
    auto session = makeClient(GetParam(), wire.host());
    wire.hold();
    const auto connected = start(session->connect());
    loop.advance(30s);
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
    loop.advance(30s);
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
    auto session = makeClient(GetParam(), wire.host());
    auto connected = start(session->connect());
    loop.advance(59s);
    EXPECT_FALSE(connected->has_value());
    loop.advance(1s);
    runUntil([&] { return connected->has_value(); });
    EXPECT_EQ((*connected)->error().description, wire.host() + " did not answer in time");
    close(session);

    session = makeClient(GetParam(), wire.host());
    connected = start(session->connect());
    loop.drain();
    close(session);
    runUntil([&] { return connected->has_value(); });
    EXPECT_EQ((*connected)->error().description, "the session was closed");
}

INSTANTIATE_TEST_SUITE_P(Voice, BadNetworkTest, testing::ValuesIn(kAllVoiceProviders), providerName);

} // namespace
} // namespace velto::test
