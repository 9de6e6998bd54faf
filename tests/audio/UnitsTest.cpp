#include "VeltoShared/audio/AudioCapture.h"
#include "VeltoShared/audio/AudioPlayback.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <numeric>

namespace velto::test {
namespace {

using Samples = std::vector<std::int16_t>;

class Units : public ::testing::Test, protected TestComputer {
  protected:
    Units() { audio.addUsualDevices(); }

    std::unique_ptr<AudioCapture> capture() {
        return AudioCapture::open("VeltoLoop 2ch", 16000, 2, [this](auto samples) {
            ++deliveries;
            last.assign(samples.begin(), samples.end());
        });
    }

    int deliveries = 0;
    Samples last;
};

TEST_F(Units, areNotHadWithoutComponentOrInstance) {
    for (const auto fault :
         {&SimulatedAudioFaults::noUnitComponent, &SimulatedAudioFaults::instantiationFails}) {
        audio.faults = {};
        audio.faults.*fault = true;
        EXPECT_FALSE(capture());
        EXPECT_FALSE(AudioPlayback::open("Speaker", 24000, 2));
    }
}

TEST_F(Units, captureAveragesChannelsTowardZero) {
    auto unit = capture();
    unit->start();
    EXPECT_EQ(
        audio.deliver("VeltoLoop 2ch", Samples{1000, -999, -1000, 999, 32767, 32767, -32768, -32768, 3, 0}),
        kAudioNoError);
    EXPECT_EQ(last, (Samples{0, 0, 32767, -32768, 1}));
    audio.deliver("VeltoLoop 2ch", Samples{});
    EXPECT_EQ(deliveries, 2);
    EXPECT_TRUE(last.empty());
    unit->stop();
    unit->start(); // too late
}

TEST_F(Units, captureSurvivesFailingAndOversizedRenders) {
    auto unit = capture();
    unit->start();
    audio.faults.renderStatus = -50;
    EXPECT_EQ(audio.deliver("VeltoLoop 2ch", Samples(20)), -50);
    audio.faults.renderStatus = kAudioNoError;
    EXPECT_EQ(audio.deliver("VeltoLoop 2ch", Samples(2 * 8193)), kAudioTooManyFrames);
    audio.faults.renderWithoutData = true;
    EXPECT_EQ(audio.deliver("VeltoLoop 2ch", Samples(20)), kAudioNoError);
    audio.faults.renderWithoutData = false;
    EXPECT_EQ(deliveries, 0);
    // A small render must not shrink the buffer for the largest one after it.
    audio.deliver("VeltoLoop 2ch", Samples(2, 4));
    EXPECT_EQ(audio.deliver("VeltoLoop 2ch", Samples(2 * 8192, 7)), kAudioNoError);
    EXPECT_EQ(last, Samples(8192, 7));

    CaptureBox empty;
    EXPECT_EQ(CaptureBox::captured(&empty, {}, 1), kAudioUnready);
}

TEST_F(Units, theQueueIsCompactedPastItsLimitOnly) {
    PlaybackBox box(1);
    box.ring.resize(20'000);
    std::iota(box.ring.begin(), box.ring.end(), std::int16_t{0});
    Samples out(17'000);
    const auto play = [&](std::uint32_t frames) {
        AudioBuffer buffer{1, frames * 2, out.data()};
        PlaybackBox::rendered(&box, frames, {&buffer, 1});
    };
    play(16384);
    EXPECT_EQ(box.head, 16384u);
    EXPECT_EQ(box.ring.size(), 20'000u);
    play(616);
    EXPECT_EQ(out[615], 16'999);
    EXPECT_EQ(box.head, 0u);
    EXPECT_EQ(box.ring.size(), 3'000u);
    EXPECT_EQ(box.ring.front(), 17'000);
}

} // namespace
} // namespace velto::test
