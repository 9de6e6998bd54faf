// CPU a sent audio message.
#include "bench/voice/Client.h"
#include "bench/voice/Parts.h"

#include <cstdio>

namespace velto::bench {
namespace {

constexpr int kMessages = 1500;
constexpr int kRounds = 9;

asio::awaitable<double> sendRound(VoiceSession& session, std::span<const std::byte> pcm) {
    const double start = threadMicroseconds();
    for (int i = 0; i < kMessages; ++i)
        co_await session.sendAudio(pcm);
    co_return (threadMicroseconds() - start) / kMessages;
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
    run(session->close());
    std::printf("outbound, 640 PCM bytes: %s of CPU a message, the kernel's share included (aim 15)\n",
                microseconds(figureOf(rounds)).c_str());
}

} // namespace velto::bench
