#include "VeltoShared/core/BoundedSequence.h"

#include "tests/support/ManualClock.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

TEST(BoundedSequence, keepsTheNewestAndEndsAfterTheWaitingOnes) {
    Loop loop;
    BoundedSequence<int> sequence(512);
    for (int i = 0; i < 600; ++i)
        sequence.push(i);
    sequence.finish();
    sequence.push(1000);
    for (int i = 88; i < 600; ++i)
        ASSERT_EQ(loop.run(sequence.next()), i);
    EXPECT_EQ(loop.run(sequence.next()), std::nullopt);
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
