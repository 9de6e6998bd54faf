// CPU a received audio message.
#include "bench/voice/Client.h"
#include "bench/voice/FloorClient.h"
#include "bench/voice/Parts.h"

#include <cstdio>

namespace velto::bench {
namespace {

using test::ScriptedTlsServer;
using test::ServerPeer;

constexpr int kMessages = 1500;
constexpr int kRounds = 9;

asio::awaitable<double> receiveRound(VoiceSession& session) {
    co_await session.sendClientText("go");
    double start = 0;
    int received = 0;
    for (;;) {
        const auto event = co_await session.events().next();
        if (event && std::holds_alternative<event::Audio>(*event)) {
            if (received++ == 0)
                start = threadMicroseconds();
        } else if (!event || std::holds_alternative<event::TurnComplete>(*event)) {
            if (received != kMessages)
                giveUp(std::to_string(received) + " messages received");
            co_return (threadMicroseconds() - start) / (kMessages - 1);
        }
    }
}

} // namespace

Figure benchInbound(const Service& service) {
    const auto serve = [&](ServerPeer& peer) { service.serveAudio(peer, kMessages); };
    ScriptedTlsServer ourServer(serve);
    ScriptedTlsServer floorServer(serve);
    const auto session = makeClient(service.provider(), ourServer.host());
    connect(*session);
    FloorClient floorClient(floorServer.port(), service.audioKey());
    std::vector<double> ours;
    std::vector<double> floors;
    for (int i = 0; i < kRounds; ++i) {
        ours.push_back(run(receiveRound(*session)));
        floors.push_back(floorClient.round(kMessages));
    }
    run(session->close());
    const auto client = figureOf(ours);
    const auto floor = figureOf(floors);
    std::printf(
        "inbound, 45 000 PCM bytes: client %s, OpenSSL loop %s of CPU a message: ratio %.2f (aim 1.4)\n",
        microseconds(client).c_str(), microseconds(floor).c_str(), client.median / floor.median);
    return client;
}

} // namespace velto::bench
