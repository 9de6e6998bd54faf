// Resident memory of a client that has received much.
#include "bench/voice/Client.h"
#include "bench/voice/Parts.h"
#include "bench/voice/Program.h"

#include <cstdio>

namespace velto::bench {
namespace {

constexpr int kFew = 1'000;
constexpr int kMany = 10'000;

} // namespace

void benchMemory(const Service& service) {
    const test::ScriptedTlsServer server([&](test::ServerPeer& peer) {
        service.serveTalk(peer, {kFew, kMany - kFew});
    });
    const auto client =
        runProgram({BENCH_CLIENT, "memory", std::string(rawValue(service.provider())), server.host()}, {},
                   std::chrono::seconds(120));
    if (client.code != 0 || client.lines.size() != 2)
        giveUp("the client ended with code " + std::to_string(client.code));
    const long few = std::stol(client.lines[0]);
    const long many = std::stol(client.lines[1]);
    std::printf("memory of a client process: %ld KiB after %d messages, %ld KiB after %d: %+ld KiB\n", few,
                kFew, many, kMany, many - few);
}

} // namespace velto::bench
