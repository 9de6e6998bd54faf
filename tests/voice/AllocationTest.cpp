// What a chunk of audio costs on its way to the socket: no memory after the first ones.
#include "tests/support/AllocationCounter.h"
#include "tests/voice/VoiceFixture.h"

#include <openssl/crypto.h>

#include <cstdlib>

namespace {

thread_local std::size_t byAsio = 0; ///< whose recycling allocator passes operator new by
thread_local std::size_t byOpenSSL = 0;

// Before OpenSSL has taken any memory.
const int isWatched = CRYPTO_set_mem_functions(
    [](std::size_t size, const char*, int) {
        ++byOpenSSL;
        return std::malloc(size);
    },
    [](void* memory, std::size_t size, const char*, int) {
        ++byOpenSSL;
        return std::realloc(memory, size);
    },
    [](void* memory, const char*, int) { std::free(memory); });

} // namespace

extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++byAsio;
    void* memory = nullptr;
    return ::posix_memalign(&memory, alignment, size) == 0 ? memory : nullptr;
}

namespace velto::test {
namespace {

class AllocationTest : public VoiceFixture {};

/// Ours, and OpenSSL's.
asio::awaitable<std::pair<std::size_t, std::size_t>> allocationsOf(VoiceSession& session, int chunks,
                                                                   std::span<const std::byte> pcm) {
    const auto before = allocationCount();
    byAsio = byOpenSSL = 0;
    for (int i = 0; i < chunks; ++i)
        co_await session.sendAudio(pcm);
    co_return std::pair{allocationCount() - before + byAsio, byOpenSSL};
}

TEST_F(AllocationTest, SendingAudioAllocatesNothing) {
    ScriptedTlsServer server([](ServerPeer& peer) {
        peer.accept();
        peer.drain(); // takes no memory of its own, which would be counted
    });
    const auto session = makeClient(VoiceProvider::openai, server.host());
    ASSERT_TRUE(run(session->connect()));
    const std::string pcm(640, 'x');
    EXPECT_GT(run(allocationsOf(*session, 50, bytes(pcm))).first, 0u) << "the count does not work";
    const auto [ours, openSSL] = run(allocationsOf(*session, 1000, bytes(pcm)));
    EXPECT_EQ(ours, 0u);
    // Its packet writer takes three blocks of 40 bytes for a record and gives them back.
    ASSERT_TRUE(isWatched);
    EXPECT_LE(openSSL, 3u * 1000);
    run(session->close());
}

} // namespace
} // namespace velto::test
