// CPU a sent audio message.
#include "bench/voice/Client.h"
#include "bench/voice/Parts.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <chrono>
#include <cstdio>

namespace velto::bench {
namespace {

constexpr int kMessages = 1500;
constexpr int kRounds = 9;
constexpr int kPaced = 100;
constexpr std::chrono::milliseconds kChunkTime(20);

asio::awaitable<double> sendRound(VoiceSession& session, std::span<const std::byte> pcm) {
    const double start = threadMicroseconds();
    for (int i = 0; i < kMessages; ++i)
        co_await session.sendAudio(pcm);
    co_return (threadMicroseconds() - start) / kMessages;
}

/// As a microphone gives chunks, with the thread asleep between them; without a session, what the waking
/// costs.
asio::awaitable<double> pacedRound(VoiceSession* session, std::span<const std::byte> pcm) {
    asio::steady_timer timer(co_await asio::this_coro::executor);
    const double start = threadMicroseconds();
    for (int i = 0; i < kPaced; ++i) {
        timer.expires_after(kChunkTime);
        co_await timer.async_wait(asio::use_awaitable);
        if (session)
            co_await session->sendAudio(pcm);
    }
    co_return (threadMicroseconds() - start) / kPaced;
}

} // namespace

void benchOutbound(const Service& service) {
    test::ScriptedTlsServer server([](test::ServerPeer& peer) {
        peer.accept();
        peer.readUntilClosed();
    });
    const auto session = makeClient(service.provider(), server.host());
    connect(*session);
    const auto pcm = someBytes(kChunkBytes);
    std::vector<double> rounds;
    for (int i = 0; i < kRounds; ++i)
        rounds.push_back(run(sendRound(*session, pcm)));
    const double paced = run(pacedRound(session.get(), pcm));
    const double waking = run(pacedRound(nullptr, pcm));
    run(session->close());
    std::printf("outbound, 640 PCM bytes: %s of CPU a message, one after the other (aim 15); one every 20 "
                "ms: %.1f us, of "
                "which waking up for it %.1f us\n",
                microseconds(figureOf(rounds)).c_str(), paced, waking);
}

} // namespace velto::bench
