// Uneven arrival over a clock moved by hand: fragments of 10 ms at 16 kHz, taken 10 ms at a time.
#include "VeltoPlatform/linux/JitterBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velto::test {
namespace {

using namespace std::chrono_literals;

class JitterBufferTest : public ::testing::Test {
  protected:
    static constexpr std::size_t period = 160 * 2;

    /// Ten milliseconds in which `fragments` arrive; answers whether sound came out.
    bool pass(int fragments = 1) {
        now += 10ms;
        for (int i = 0; i < fragments; ++i)
            buffer.push(std::vector<std::int16_t>(period, level), now);
        std::vector<std::int32_t> sum(period);
        buffer.addTo(sum, now);
        return std::ranges::all_of(sum, [](auto sample) { return sample != 0; });
    }
    bool passFor(std::chrono::milliseconds time) {
        bool whole = true;
        for (auto passed = 0ms; passed < time; passed += 10ms)
            whole = pass() && whole;
        return whole;
    }

    JitterBuffer buffer{16'000, 2};
    JitterBuffer::Time now{1s};
    std::int16_t level = 1000;
};

TEST_F(JitterBufferTest, soundWaitsAndThenComesWhole) {
    EXPECT_FALSE(pass() || pass() || pass());
    EXPECT_TRUE(passFor(5s));
    const auto steady = buffer.kept();
    EXPECT_LE(steady, 30ms);
    for (int i = 0; i < 100; ++i) { // two fragments every other time
        EXPECT_TRUE(pass(0) && pass(2));
    }
    EXPECT_EQ(buffer.kept(), steady);
}

TEST_F(JitterBufferTest, whatComesLateAfterAGapIsCaughtUp) {
    passFor(1s);
    const auto steady = buffer.kept();
    while (pass(0)) {
    }
    for (int i = 0; i < 3; ++i)
        pass(0);
    // All that was missed, at once; it waits as long as the first did.
    pass(7);
    passFor(300ms);
    ASSERT_GT(buffer.kept(), 60ms);
    passFor(900ms);
    EXPECT_GT(buffer.kept(), 60ms) << "not yet, for it is loud";
    level = 100;
    passFor(1s);
    EXPECT_LE(buffer.kept(), steady);

    level = 1000;
    pass(6);
    EXPECT_TRUE(passFor(3s)) << "loud all the time, it goes in the end";
    EXPECT_LE(buffer.kept(), steady + 10ms);
    pass(200);
    EXPECT_EQ(buffer.kept(), 100ms);
}

} // namespace
} // namespace velto::test
