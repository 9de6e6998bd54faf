// The probe over the wires of a computer in memory.
#include "VeltoShared/audio/LoopbackProbe.h"
#include "VeltoShared/core/Clock.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

class LoopbackProbeTest : public ::testing::Test, protected TestComputer {
  protected:
    /// Whoever blocks lets the devices run.
    struct RunningClock : ManualClock {
        explicit RunningClock(SimulatedAudio& devices) : ManualClock([] {}), audio(devices) { install(this); }
        ~RunningClock() override { install(nullptr); }
        void blockFor(Duration duration) override {
            audio.advance(std::chrono::duration_cast<std::chrono::milliseconds>(duration));
            ManualClock::blockFor(duration);
        }
        SimulatedAudio& audio;
    };

    LoopbackProbeTest() { audio.addUsualDevices(); }
    RunningClock clock{audio};
};

TEST_F(LoopbackProbeTest, AWorkingPathHasTheTonesLevel) {
    for (const auto& [out, in, rate] : {std::tuple{"VeltoVoice 2ch Feed", "VeltoVoice 2ch Mic", 24'000.0},
                                        {"VeltoLoop 2ch", "VeltoLoop 2ch", 16'000.0}}) {
        const auto result = LoopbackProbe::run(out, in, 2, rate);
        EXPECT_EQ(result.capturedFrames, static_cast<std::int64_t>(2.5 * rate)) << out;
        EXPECT_NEAR(static_cast<double>(result.capturedRMS), 7590, 10) << out;
        EXPECT_NEAR(static_cast<double>(result.capturedPeak), 12'000, 10) << out;
    }
    EXPECT_EQ(audio.runningUnits(), 0u);
}

TEST_F(LoopbackProbeTest, ABrokenPathIsSilentAndAMissingOneCostsNoTime) {
    EXPECT_EQ(LoopbackProbe::run("Speaker", "VeltoLoop 2ch", 1, 16'000),
              (LoopbackProbe::Result{0, 0, 24'000}));
    const auto before = clock.steadyNow();
    EXPECT_EQ(LoopbackProbe::run("nothing", "VeltoLoop 2ch", 2, 16'000), LoopbackProbe::Result{});
    EXPECT_EQ(LoopbackProbe::run("VeltoLoop 2ch", "nothing", 2, 16'000), LoopbackProbe::Result{});
    EXPECT_EQ(clock.steadyNow(), before);
}

} // namespace
} // namespace velto::test
