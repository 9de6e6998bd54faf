// What a recording leaves on the disk, at every moment and on a bad day.
#include "VeltoShared/audio/WavRecorder.h"
#include "VeltoShared/audio/Wav.h"
#include "VeltoShared/audio/WavFormat.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <fstream>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using Samples = std::vector<std::int16_t>;

class WavRecorderTest : public ::testing::Test, protected TestComputer {
  protected:
    WavRecorderTest() { audio.addUsualDevices(); }

    std::unique_ptr<WavRecorder> started(const std::filesystem::path& path) {
        auto recorder = WavRecorder::open("VeltoLoop 2ch", 16'000, path);
        if (recorder)
            recorder->start();
        return recorder;
    }
    /// The device brings `count` more samples, on both channels the same.
    void hear(std::size_t count) {
        do {
            const auto part = std::min<std::size_t>(count, 1600);
            Samples stereo;
            for (std::size_t i = 0; i < part; ++i) {
                sounded.push_back(static_cast<std::int16_t>(sounded.size() * 7));
                stereo.insert(stereo.end(), 2, sounded.back());
            }
            audio.deliver("VeltoLoop 2ch", stereo);
            count -= part;
        } while (count > 0);
    }
    static std::string header(std::uint32_t frames) {
        const auto bytes = WavFormat::header(frames, 16'000);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

    Loop loop;
    const std::filesystem::path file = root() / "call.wav";
    Samples sounded;
};

TEST_F(WavRecorderTest, TheFileFollowsTheSound) {
    { std::ofstream(file) << std::string(1000, 'x'); }
    auto recorder = started(file);
    ASSERT_TRUE(recorder);
    EXPECT_EQ(readFile(file), header(0)) << "what was there is replaced";
    hear(160);
    hear(0);
    loop.advance(100ms);
    EXPECT_EQ(readFile(file).size(), 44u + 320u);
    EXPECT_EQ(readFile(file).substr(0, 44), header(0)) << "the header does not follow at once";
    for (int i = 0; i < 4; ++i) {
        hear(160);
        loop.advance(100ms);
    }
    EXPECT_EQ(readFile(file).substr(0, 44), header(800)) << "but twice a second, for a crash";
    hear(15'200);
    recorder->stop();
    const auto bytes = readFile(file);
    EXPECT_EQ(bytes.size(), 32'044u);
    EXPECT_EQ(bytes.substr(0, 44), header(16'000));
    EXPECT_EQ(Wav::readMono16(file)->samples, sounded);
    EXPECT_EQ(recorder->trouble(), "");
    recorder->stop();
    loop.advance(1s);
    EXPECT_EQ(readFile(file), bytes);
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
}

TEST_F(WavRecorderTest, NoSoundIsAnEmptyHeaderAndNoDeviceToo) {
    started(file)->stop();
    EXPECT_EQ(readFile(file), header(0));
    EXPECT_FALSE(WavRecorder::open("veltoloop 2ch", 16'000, root() / "none.wav"));
    EXPECT_EQ(readFile(root() / "none.wav"), header(0));
}

TEST_F(WavRecorderTest, WhatCannotBeWrittenIsCountedAndSaid) {
    for (const auto& [path, why] :
         {std::pair<std::string, std::string>{"/dev/full", "No space left on device"},
          {root() / "missing" / "a.wav", "No such file or directory"},
          {root(), "Is a directory"}}) {
        auto recorder = started(path);
        ASSERT_TRUE(recorder) << path;
        hear(100);
        loop.advance(100ms);
        hear(60);
        recorder->stop();
        EXPECT_EQ(recorder->trouble(), "160 samples could not be written: " + why);
    }
    auto recorder = started(file);
    constexpr std::size_t kWaiting = std::size_t{1} << 18;
    hear(kWaiting + 5);
    recorder->stop();
    EXPECT_EQ(recorder->trouble(), "5 samples could not be written: the disk was too slow");
    EXPECT_EQ(Wav::readMono16(file)->samples.size(), kWaiting);
}

TEST_F(WavRecorderTest, TheRealTimeThreadAllocatesNothing) {
    auto recorder = started(file);
    const Samples stereo(320, 5);
    audio.deliver("VeltoLoop 2ch", stereo);
    const auto before = allocationCount();
    audio.deliver("VeltoLoop 2ch", stereo);
    EXPECT_EQ(allocationCount(), before);
    recorder->stop();
}

} // namespace
} // namespace velto::test
