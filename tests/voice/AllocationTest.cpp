// What a chunk of audio costs on its way to the socket: no memory after the first ones.
#include "tests/voice/VoiceFixture.h"

#include <atomic>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VELTO_COUNTS_ALLOCATIONS 0 // the sanitizer has its own allocator
#else
#define VELTO_COUNTS_ALLOCATIONS 1
#endif

namespace {

thread_local bool isCounting = false;
thread_local long counted = 0;

} // namespace

#if VELTO_COUNTS_ALLOCATIONS
// Everything ends here: operator new, Asio's recycling allocator (aligned_alloc) and OpenSSL (malloc).
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);

void* malloc(std::size_t size) {
    counted += isCounting;
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    counted += isCounting;
    return __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
    counted += isCounting;
    return __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    counted += isCounting;
    return __libc_memalign(alignment, size);
}
}
#endif

namespace velto {
namespace {

class AllocationTest : public test::VoiceFixture {};

asio::awaitable<long> allocationsOf(VoiceSession& session, int chunks, std::span<const std::byte> pcm) {
    isCounting = true;
    counted = 0;
    for (int i = 0; i < chunks; ++i)
        co_await session.sendAudio(pcm);
    isCounting = false;
    co_return counted;
}

TEST_F(AllocationTest, SendingAudioAllocatesNothing) {
    if (!VELTO_COUNTS_ALLOCATIONS)
        GTEST_SKIP() << "not under a sanitizer";
    test::ScriptedTlsServer server([](test::ServerPeer& peer) {
        peer.accept();
        peer.readUntilClosed();
    });
    const auto session = client(server.host());
    ASSERT_TRUE(run(session->connect()));
    const std::string pcm(640, 'x');
    EXPECT_GT(run(allocationsOf(*session, 50, bytes(pcm))), 0) << "the count does not work";
    EXPECT_EQ(run(allocationsOf(*session, 1000, bytes(pcm))), 0);
    run(session->close());
}

} // namespace
} // namespace velto
