#include "VeltoShared/core/BoundedSequence.h"

#include "tests/support/ManualClock.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

std::vector<int> takeAll(Loop& loop, BoundedSequence<int>& sequence) {
    std::vector<int> taken;
    loop.run([](BoundedSequence<int>& source, std::vector<int>& sink) -> asio::awaitable<void> {
        while (auto element = co_await source.next())
            sink.push_back(*element);
    }(sequence, taken));
    return taken;
}

TEST(BoundedSequence, keepsTheNewestAndEndsAfterTheWaitingOnes) {
    Loop loop;
    BoundedSequence<int> sequence(512);
    for (int i = 0; i < 600; ++i)
        sequence.push(i);
    sequence.finish();
    sequence.push(1000);
    const auto taken = takeAll(loop, sequence);
    ASSERT_EQ(taken.size(), 512u);
    EXPECT_EQ(taken.front(), 88);
    EXPECT_EQ(taken.back(), 599);
}

TEST(BoundedSequence, wakesAWaitingConsumerOncePerElement) {
    Loop loop;
    BoundedSequence<int> sequence(4);
    std::vector<int> seen;
    bool ended = false;
    MainThread::spawn([](auto& source, auto& sink, bool& end) -> asio::awaitable<void> {
        while (auto element = co_await source.next())
            sink.push_back(*element);
        end = true;
    }(sequence, seen, ended));
    loop.drain();
    sequence.push(1);
    loop.drain();
    sequence.push(2);
    sequence.push(3);
    loop.drain();
    EXPECT_EQ(seen, (std::vector{1, 2, 3}));
    EXPECT_FALSE(ended);
    sequence.finish();
    loop.drain();
    EXPECT_TRUE(ended);
}

TEST(BoundedSequence, aCancelledWaitAnswersNone) {
    Loop loop;
    BoundedSequence<int> sequence(4);
    asio::cancellation_signal cancel;
    bool ended = false;
    asio::co_spawn(
        loop.context, [](auto& source) -> asio::awaitable<void> { co_await source.next(); }(sequence),
        asio::bind_cancellation_slot(cancel.slot(), [&](std::exception_ptr) { ended = true; }));
    loop.drain();
    EXPECT_FALSE(ended);
    cancel.emit(asio::cancellation_type::terminal);
    loop.drain();
    EXPECT_TRUE(ended);
}

} // namespace
} // namespace velto::test
