// Time from the start of a process to the arrival of its first audio.
#include "bench/voice/Client.h"
#include "bench/voice/Parts.h"

#include <chrono>
#include <cstdio>
#include <future>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velto::bench {
namespace {

using Instant = std::chrono::steady_clock::time_point;

constexpr int kStarts = 20;

/// Not with fork, which takes its time for a process as big as this one.
pid_t start(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    for (auto& each : arguments)
        pointers.push_back(each.data());
    pointers.push_back(nullptr);
    pid_t pid = 0;
    if (::posix_spawn(&pid, pointers[0], nullptr, nullptr, pointers.data(), environ) != 0)
        giveUp("cannot start " + arguments[0]);
    return pid;
}

} // namespace

void benchStart(const Service& service) {
    std::promise<Instant> arrival;
    test::ScriptedTlsServer server([&](test::ServerPeer& peer) {
        peer.accept();
        const auto configuration = peer.read();
        const auto audio = peer.read();
        if (configuration && audio && audio->payload.size() > kChunkBytes)
            arrival.set_value(std::chrono::steady_clock::now());
        peer.readUntilClosed();
    });
    std::vector<double> starts;
    for (int i = 0; i < kStarts; ++i) {
        arrival = {};
        auto arrived = arrival.get_future();
        const auto began = std::chrono::steady_clock::now();
        const pid_t pid =
            start({BENCH_CLIENT, "start", std::string(rawValue(service.provider())), server.host()});
        if (arrived.wait_for(std::chrono::seconds(10)) != std::future_status::ready)
            giveUp("the client's audio did not arrive");
        starts.push_back(std::chrono::duration<double, std::milli>(arrived.get() - began).count());
        ::waitpid(pid, nullptr, 0);
    }
    const auto figure = figureOf(starts);
    std::printf("start of a process to its first audio at the server: median %.1f ms, longest %.1f ms of %d "
                "(aim 30)\n",
                figure.median, figure.most, kStarts);
}

} // namespace velto::bench
