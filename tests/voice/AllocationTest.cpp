// What a chunk of audio costs on its way to the socket: no memory after the first ones.
#include "tests/voice/VoiceFixture.h"

#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VELTO_COUNTS_ALLOCATIONS 0 // the sanitizer has its own allocator
#else
#define VELTO_COUNTS_ALLOCATIONS 1
#endif

namespace {

thread_local bool isCounting = false;
thread_local long ours =
    0; ///< through operator new, or Asio's recycling allocator, which falls back to aligned_alloc
thread_local long libraries = 0; ///< malloc by itself: OpenSSL

} // namespace

#if VELTO_COUNTS_ALLOCATIONS
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);

void* malloc(std::size_t size) {
    libraries += isCounting;
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    libraries += isCounting;
    return __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
    libraries += isCounting;
    return __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ours += isCounting;
    return __libc_memalign(alignment, size);
}
}

void* operator new(std::size_t size) {
    ours += isCounting;
    if (void* memory = __libc_malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
#endif

namespace velto {
namespace {

class AllocationTest : public test::VoiceFixture {};

struct Count {
    long ours = 0;
    long libraries = 0;
};

asio::awaitable<Count> allocationsOf(VoiceSession& session, int chunks, std::span<const std::byte> pcm) {
    ours = libraries = 0;
    isCounting = true;
    for (int i = 0; i < chunks; ++i)
        co_await session.sendAudio(pcm);
    isCounting = false;
    co_return Count{ours, libraries};
}

TEST_F(AllocationTest, SendingAudioAllocatesNothing) {
    if (!VELTO_COUNTS_ALLOCATIONS)
        GTEST_SKIP() << "not under a sanitizer";
    test::ScriptedTlsServer server([](test::ServerPeer& peer) {
        peer.accept();
        peer.readUntilClosed();
    });
    const auto session = test::makeClient(VoiceProvider::openai, server.host());
    ASSERT_TRUE(run(session->connect()));
    const std::string pcm(640, 'x');
    const Count first = run(allocationsOf(*session, 50, bytes(pcm)));
    EXPECT_GT(first.ours, 0) << "the count does not work";
    const Count later = run(allocationsOf(*session, 1000, bytes(pcm)));
    EXPECT_EQ(later.ours, 0);
    // OpenSSL's packet writer takes three blocks of 40 bytes for a record and gives them back.
    EXPECT_LE(later.libraries, 3 * 1000);
    run(session->close());
}

} // namespace
} // namespace velto
