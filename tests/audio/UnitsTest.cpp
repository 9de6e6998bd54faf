#include "VeltoShared/audio/AudioCapture.h"
#include "VeltoShared/audio/AudioPlayback.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <numeric>

namespace velto::test {
namespace {

using Samples = std::vector<std::int16_t>;

class Units : public ::testing::Test, protected TestComputer {
  protected:
    Units() { audio.addUsualDevices(); }

    std::unique_ptr<AudioCapture> capture(std::uint32_t channels = 2) {
        return AudioCapture::open("VeltoLoop 2ch", 16000, channels, [this](auto samples) {
            ++deliveries;
            last.assign(samples.begin(), samples.end());
        });
    }

    int deliveries = 0;
    Samples last;
};

TEST_F(Units, areSetUpAndTakenDownInOrder) {
    const auto loop = std::to_string(*audio.devices().value().rbegin());
    {
        auto unit = capture();
        unit->start();
        unit->stop();
        unit->stop();
        unit->start();
    }
    EXPECT_EQ(
        audio.unitCalls(),
        (std::vector<std::string>{"enableIO output 0 off", "enableIO input 1 on", "setCurrentDevice " + loop,
                                  "setStreamFormat output 1 16000 Hz 2 ch", "setInputCallback", "initialize",
                                  "start", "stop", "uninitialize", "dispose"}));
    const auto before = static_cast<std::ptrdiff_t>(audio.unitCalls().size());
    AudioPlayback::open("VeltoLoop 2ch", 24000, 2).reset();
    const auto calls = audio.unitCalls();
    EXPECT_EQ(std::vector(calls.begin() + before, calls.end()),
              (std::vector<std::string>{"enableIO output 0 on", "setCurrentDevice " + loop,
                                        "setStreamFormat input 0 24000 Hz 2 ch", "setRenderCallback",
                                        "initialize", "stop", "uninitialize", "dispose"}));
}

TEST_F(Units, areNotHadWithoutDeviceComponentOrInstance) {
    EXPECT_FALSE(AudioCapture::open("veltoloop 2ch", 16000, 2, {}));
    EXPECT_FALSE(AudioPlayback::open("", 16000, 2));
    audio.faults.noUnitComponent = true;
    EXPECT_FALSE(capture());
    EXPECT_FALSE(AudioPlayback::open("Speaker", 24000, 2));
    audio.faults.noUnitComponent = false;
    audio.faults.instantiationFails = true;
    EXPECT_FALSE(capture());
    EXPECT_FALSE(AudioPlayback::open("Speaker", 24000, 2));
    EXPECT_TRUE(audio.unitCalls().empty());
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

    for (const std::uint32_t channels : {0U, 1U}) {
        auto mono = capture(channels);
        mono->start();
        audio.deliver("VeltoLoop 2ch", Samples{5, -6});
        EXPECT_EQ(last, (Samples{5, -6}));
    }
    auto wide = capture(3);
    wide->start();
    audio.deliver("VeltoLoop 2ch", Samples{-5, -5, -1, 9, 9, 9});
    EXPECT_EQ(last, (Samples{-3, 9}));
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

TEST_F(Units, playbackDuplicatesFillsAndCounts) {
    auto unit = AudioPlayback::open("Speaker", 24000, 2);
    unit->start();
    EXPECT_EQ(audio.pull("Speaker", 3), Samples(6));
    unit->write(Samples{1, -2});
    unit->write(Samples{3});
    EXPECT_EQ(audio.pull("Speaker", 2), (Samples{1, 1, -2, -2}));
    EXPECT_EQ(audio.pull("Speaker", 2), (Samples{3, 3, 0, 0}));
    EXPECT_EQ(unit->stats().rendered, 7);
    EXPECT_EQ(unit->stats().underruns, 4);
    unit->write(Samples(10, 9));
    audio.pull("Speaker", 1);
    unit->flush();
    EXPECT_EQ(audio.pull("Speaker", 4), Samples(8));
    unit->write(Samples{5});
    EXPECT_EQ(audio.pull("Speaker", 1), (Samples{5, 5}));
    unit->stop();
    EXPECT_TRUE(audio.pull("Speaker", 1).empty());
}

TEST_F(Units, playbackBoxServesEveryBufferByItsOwnChannels) {
    PlaybackBox box(2);
    box.ring = {1, 2, 3, 4, 5, 6};
    Samples none(2, -1);
    Samples one(2, -1);
    Samples three(6, -1);
    std::array<AudioBuffer, 4> buffers{AudioBuffer{0, 4, none.data()}, AudioBuffer{2, 0, nullptr},
                                       AudioBuffer{1, 4, one.data()}, AudioBuffer{3, 12, three.data()}};
    EXPECT_EQ(PlaybackBox::rendered(&box, 2, buffers), kAudioNoError);
    EXPECT_EQ(none, (Samples{1, 2}));
    EXPECT_EQ(one, (Samples{3, 4}));
    EXPECT_EQ(three, (Samples{5, 5, 5, 6, 6, 6}));
    EXPECT_EQ(box.renderedFrames, 6);
    EXPECT_EQ(PlaybackBox::rendered(&box, 2, {}), kAudioUnready);
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

TEST_F(Units, callbacksAllocateNothing) {
    CaptureBox captureBox;
    std::int64_t sum = 0;
    captureBox.onFrames = [&](auto samples) { sum = std::accumulate(samples.begin(), samples.end(), sum); };
    captureBox.prepare(2);
    struct Source final : OutputUnit {
        AudioStatus enableIO(UnitScope, std::uint32_t, bool) override { return 0; }
        AudioStatus setCurrentDevice(AudioObjectID) override { return 0; }
        AudioStatus setStreamFormat(UnitScope, std::uint32_t, const StreamFormat&) override { return 0; }
        AudioStatus setInputCallback(InputCallback, void*) override { return 0; }
        AudioStatus setRenderCallback(RenderCallback, void*) override { return 0; }
        AudioStatus initialize() override { return 0; }
        AudioStatus start() override { return 0; }
        AudioStatus stop() override { return 0; }
        AudioStatus uninitialize() override { return 0; }
        AudioStatus render(const RenderContext&, std::uint32_t frames, AudioBufferList buffers) override {
            std::fill_n(buffers[0].data, frames * 2, std::int16_t{2});
            return 0;
        }
    } source;
    captureBox.unit = &source;
    PlaybackBox playbackBox(2);
    playbackBox.ring.resize(60'000);
    Samples out(2 * 8192);

    const auto before = allocationCount();
    for (std::uint32_t frames = 0; frames <= 8192; frames += 512) {
        CaptureBox::captured(&captureBox, {}, frames);
        AudioBuffer buffer{2, frames * 4, out.data()};
        PlaybackBox::rendered(&playbackBox, frames, {&buffer, 1});
    }
    EXPECT_EQ(allocationCount(), before);
    EXPECT_EQ(sum, 2 * 512 * (16 * 17 / 2));
    EXPECT_GT(playbackBox.underrunFrames, 0);
    const auto counted = std::make_unique<int>(1);
    EXPECT_EQ(allocationCount(), before + 1);
}

TEST_F(Units, simulatedWiresCarrySoundBetweenUnits) {
    auto playback = AudioPlayback::open("VeltoVoice 2ch Feed", 24000, 2);
    Samples heard;
    auto listening = AudioCapture::open("VeltoVoice 2ch Mic", 16000, 2, [&](auto samples) {
        heard.insert(heard.end(), samples.begin(), samples.end());
    });
    playback->start();
    listening->start();
    playback->write(Samples(240, 1000));
    audio.speak("VeltoVoice 2ch Mic", Samples(480, 50));
    audio.advance(std::chrono::milliseconds(20));
    Samples expected(160, 1050);
    expected.resize(320, 0);
    EXPECT_EQ(heard, expected);
    audio.removeDevice("VeltoVoice 2ch Mic");
    audio.advance(std::chrono::milliseconds(10));
    EXPECT_EQ(heard.size(), 320u);
    audio.addDevice("VeltoVoice 2ch Mic", 2, 0);
    audio.advance(std::chrono::milliseconds(10));
    EXPECT_EQ(heard.size(), 480u);
    EXPECT_EQ(audio.takeHeard("VeltoVoice 2ch Feed").size(), 4 * 480u);
}

} // namespace
} // namespace velto::test
