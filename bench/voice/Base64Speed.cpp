// Base64 against memcpy.
#include "VeltoShared/voice/Base64.h"
#include "bench/voice/Parts.h"

#include <cstdio>
#include <cstring>

namespace velto::bench {
namespace {

/// Nanoseconds a call, over `count` messages in turn.
template <class Work>
double nanoseconds(std::size_t count, Work work) {
    std::vector<double> rounds;
    for (int round = 0; round < 25; ++round) {
        const double start = threadMicroseconds();
        for (std::size_t i = 0; i < 512; ++i)
            work(i % count);
        rounds.push_back((threadMicroseconds() - start) * 1000 / 512);
    }
    return figureOf(rounds).median;
}

/// With one message all stays in the second-level cache; with many, each comes from memory, as live ones do.
void decode(std::size_t count, const char* what) {
    const std::vector<std::string> texts(count, base64Of(kPcmBytes));
    std::vector<std::string> copies(count, std::string(texts[0].size(), ' '));
    std::vector<std::vector<std::byte>> outs(count, std::vector<std::byte>(kPcmBytes));
    const double copy = nanoseconds(count, [&](std::size_t i) {
        std::memcpy(copies[i].data(), texts[i].data(), texts[i].size());
        asm volatile("" ::"r"(copies[i].data()) : "memory");
    });
    std::printf("base64, 60 000 characters, %s: memcpy %.0f ns", what, copy);
    for (const auto& [name, engine] : {std::pair{"portable", Base64::Engine::portable},
                                       {"AVX2", Base64::Engine::avx2},
                                       {"AVX-512", Base64::Engine::avx512}}) {
        if (!Base64::isAvailable(engine))
            continue;
        const double took =
            nanoseconds(count, [&](std::size_t i) { Base64::decode(texts[i], outs[i], engine); });
        std::printf(", %s %.0f ns (%.2f)", name, took, took / copy);
    }
    std::printf("\n");
}

} // namespace

void benchBase64() {
    decode(512, "from memory");
    decode(1, "in the cache");
}

} // namespace velto::bench
