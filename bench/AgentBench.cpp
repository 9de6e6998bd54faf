// Gain control and the chunk queue, in nanoseconds a sample beside memcpy.
#include "VeltoShared/agent/Agc.h"
#include "VeltoShared/agent/ChunkQueue.h"

#include <boost/asio/io_context.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

using Samples = std::vector<std::int16_t>;

constexpr std::size_t kFrames = 160; // 10 ms at 16 kHz

/// Best of several rounds, ns a sample.
template <class Work>
double nanosecondsPerSample(const Work& work) {
    constexpr int kRounds = 30;
    constexpr int kChunks = 2000;
    double best = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < kChunks; ++i)
            work();
        const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;
        best = std::min(best, took.count() / (kChunks * static_cast<double>(kFrames)));
    }
    return best;
}

} // namespace

int main() {
    Samples speech(kFrames);
    for (std::size_t i = 0; i < kFrames; ++i)
        speech[i] = static_cast<std::int16_t>((i * 7919) % 6000 - 3000);
    Samples chunk(kFrames);

    const double copy = nanosecondsPerSample([&] {
        std::memcpy(chunk.data(), speech.data(), kFrames * sizeof(std::int16_t));
        asm volatile("" : : "r"(chunk.data()) : "memory");
    });
    velto::Agc agc;
    const double gain = nanosecondsPerSample([&] {
        std::memcpy(chunk.data(), speech.data(), kFrames * sizeof(std::int16_t));
        velto::process(chunk, agc);
        asm volatile("" : : "r"(chunk.data()) : "memory");
    });

    boost::asio::io_context context{1};
    velto::ChunkQueue queue(context.get_executor());
    double way = 0;
    boost::asio::co_spawn(
        context,
        [](velto::ChunkQueue& source, const Samples& samples,
           double& result) -> boost::asio::awaitable<void> {
            Samples taken;
            constexpr int kChunks = 20000;
            const auto start = std::chrono::steady_clock::now();
            for (int i = 0; i < kChunks; ++i) {
                source.push(samples);
                co_await source.next(taken);
            }
            const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;
            result = took.count() / (kChunks * static_cast<double>(kFrames));
        }(queue, speech, way),
        boost::asio::detached);
    context.run();

    std::printf("memcpy                 %8.3f ns/sample\n", copy);
    std::printf("gain control           %8.3f ns/sample  (%.0f ns a chunk of 10 ms)\n", gain, gain * kFrames);
    std::printf("through the queue      %8.3f ns/sample  (with the wake-up through the kernel)\n", way);
    return 0;
}
