// A client in a process of its own. velto-bench-client start|memory PROVIDER HOST
#include "VeltoShared/core/BackgroundThreads.h"
#include "bench/voice/Client.h"

#include <cstdio>
#include <fstream>
#include <string_view>

#include <unistd.h>

namespace velto::bench {
namespace {

long residentKiB() {
    std::ifstream statm("/proc/self/statm"); // pages: the whole, then what is resident (proc(5))
    long whole = 0;
    long resident = 0;
    statm >> whole >> resident;
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

/// Takes the events up to a turn's end, as the agent does: one after the other, each let go when it has been
/// played. False when the session ends.
asio::awaitable<bool> listen(VoiceSession& session) {
    co_await session.sendClientText("go");
    std::int64_t energy = 0;
    for (;;) {
        const auto event = co_await session.events().next();
        if (!event || std::holds_alternative<event::Closed>(*event))
            co_return false;
        if (const auto* audio = std::get_if<event::Audio>(&*event))
            for (const auto sample : audio->chunk.samples())
                energy += sample;
        if (std::holds_alternative<event::TurnComplete>(*event))
            co_return energy != 0;
    }
}

int serve(std::string_view mode, VoiceProvider provider, const std::string& host) {
    const BackgroundThreads background;
    const auto session = makeClient(provider, host);
    connect(*session);
    if (mode == "start") {
        const std::vector<std::byte> pcm(kChunkBytes);
        run(session->sendAudio(pcm));
    } else {
        for (int round = 0; round < 2; ++round) {
            if (!run(listen(*session)))
                return 1;
            std::printf("%ld\n", residentKiB());
        }
    }
    run(session->close());
    return 0;
}

} // namespace
} // namespace velto::bench

int main(int count, char** arguments) {
    const auto provider = velto::voiceProvider(count == 4 ? arguments[2] : "");
    if (!provider)
        return 2;
    return velto::bench::serve(arguments[1], *provider, arguments[3]);
}
