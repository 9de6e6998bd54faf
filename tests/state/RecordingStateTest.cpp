#include "VeltoApp/state/RecordingState.h"

#include "VeltoShared/audio/Wav.h"
#include "VeltoShared/audio/WavFile.h"
#include "tests/state/StateFixture.h"

#include <fstream>

namespace velto::test {
namespace {

namespace fs = std::filesystem;
using Samples = std::vector<std::int16_t>;

struct RecordingStateTest : StateTest {
    std::shared_ptr<RecordingState> state = std::make_shared<RecordingState>();

    static fs::path folder() { return AppPaths::recordings(); }
    static void keep(const std::string& name, const Samples& samples) {
        WavFile file(folder() / name, 16'000);
        file.append(samples);
        file.finish();
    }
    static Samples counted(std::size_t count) {
        Samples samples(count);
        for (std::size_t i = 0; i < count; ++i)
            samples[i] = static_cast<std::int16_t>(i % 30'000 + 1);
        return samples;
    }
    void hear(std::size_t frames) { computer.audio.deliver("VeltoLoop 2ch", Samples(frames * 2, 7)); }
    void play(const std::string& name, const std::string& device) {
        state->play(name, device);
        loop.drain();
    }
    /// What a device asks for in `frames` frames, of one channel.
    Samples pull(const std::string& device, std::uint32_t frames) {
        Samples mono;
        const auto stereo = computer.audio.pull(device, frames);
        for (std::size_t i = 0; i < stereo.size(); i += 2)
            mono.push_back(stereo[i]);
        return mono;
    }
    Notes names() const {
        Notes names;
        for (const auto& file : state->files())
            names.push_back(file.name + ' ' + std::to_string(file.size));
        return names;
    }
};

TEST_F(RecordingStateTest, RecordsUntilStoppedOrForFiveMinutes) {
    state->start();
    EXPECT_TRUE(state->status().starts_with("Recording rec-202611"));
    const auto name = state->status().substr(sizeof "Recording " - 1);
    hear(160);
    loop.advance(1s);
    state->start("no such device");
    EXPECT_EQ(state->status(), "Recording " + name) << "one at a time";
    loop.advance(298s);
    EXPECT_TRUE(state->recording());
    loop.advance(1s);
    EXPECT_FALSE(state->recording());
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
    EXPECT_EQ(names(), Notes{name + " 364"});
    EXPECT_EQ(loop.clock.waiting(), 0u) << "its timer is gone";
    state->start("Speaker II");
    EXPECT_FALSE(state->recording());
}

TEST_F(RecordingStateTest, WithinOneSecondTheLaterRecordingReplacesTheEarlier) {
    state->start();
    hear(1600);
    state->stop();
    state->start();
    hear(160);
    state->stop();
    loop.drain();
    ASSERT_EQ(state->files().size(), 1u);
    const auto name = state->files().front().name;
    EXPECT_EQ(Wav::readMono16(folder() / name)->samples, Samples(160, 7));

    state->start();
    hear(320);
    state.reset();
    loop.advance(1s);
    EXPECT_EQ(Wav::readMono16(folder() / name)->samples, Samples(320, 7)) << "whole when its owner goes";
}

TEST_F(RecordingStateTest, ListsSoundFilesWhateverElseLiesThere) {
    for (const auto* name : {"z.wav", "call.wav", "c.WAV", "d.wav.part"})
        std::ofstream(folder() / name) << 'x';
    fs::create_directory(folder() / "a.wav");
    fs::create_symlink("nowhere", folder() / "b.wav");
    state->refresh();
    state->refresh();
    loop.drain();
    EXPECT_EQ(names(), (Notes{"call.wav 1", "z.wav 1"}));

    fs::remove_all(folder());
    std::ofstream(AppPaths::support() / "Recordings") << "no folder";
    state->start();
    state->stop();
    loop.drain();
    EXPECT_EQ(names(), Notes{});
    EXPECT_EQ(timesLogged("recording: 0 samples could not be written: Not a directory"), 1);
}

TEST_F(RecordingStateTest, FeedsADeviceBlockByBlockAndStopsIt) {
    const auto sound = counted(16'000);
    keep("a.wav", sound);
    play("a.wav", " \t");
    Samples heard;
    for (int block = 0; block < 10; ++block) {
        const auto part = pull("Speaker", 1600);
        heard.insert(heard.end(), part.begin(), part.end());
        loop.advance(100ms - 1ns);
        EXPECT_EQ(pull("Speaker", 10), Samples(10, 0)) << "not before its time";
        loop.advance(1ns);
    }
    EXPECT_EQ(heard, sound);
    loop.advance(499ms);
    EXPECT_EQ(computer.audio.runningUnits(), 1u);
    loop.advance(1ms);
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
    EXPECT_EQ(state->status(), "Playing a.wav");
}

TEST_F(RecordingStateTest, TheLastOneThatWasAskedForPlays) {
    keep("a.wav", Samples(16'000, 1));
    keep("b.wav", Samples(1600, 2));
    play("a.wav", "Speaker");
    loop.advance(150ms);
    state->play("a.wav", "VeltoLoop 2ch");
    state->play("b.wav", " VeltoLoop 2ch\t");
    loop.drain();
    EXPECT_EQ(computer.audio.runningUnits(), 1u);
    EXPECT_EQ(state->status(), "Playing b.wav");
    EXPECT_EQ(pull("VeltoLoop 2ch", 1600), Samples(1600, 2));

    computer.audio.removeDevice("VeltoLoop 2ch");
    loop.advance(10s);
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
    EXPECT_EQ(loop.clock.waiting(), 0u);
    play("a.wav", "Speaker");
    state.reset();
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
    loop.advance(10s);
}

TEST_F(RecordingStateTest, PlaysFromAPlaceTellsWhereItIsAndStops) {
    const auto sound = counted(16'000);
    keep("a.wav", sound);
    for (const auto& [asked, from] : {std::pair{0.5, 0.5}, {9.0, 1.0}, {-1.0, 0.0}}) {
        state->play("a.wav", "Speaker", asked);
        loop.drain();
        ASSERT_TRUE(state->playing());
        EXPECT_EQ(*state->playing(), (RecordingState::Playing{"a.wav", from}));
        const auto first = sound.begin() + static_cast<std::ptrdiff_t>(from * 16'000);
        const Samples block(first, std::min(first + 1600, sound.end()));
        EXPECT_EQ(pull("Speaker", static_cast<std::uint32_t>(block.size())), block);
        loop.advance(100ms);
        EXPECT_NEAR(state->playing()->position, std::min(from + 0.1, 1.0), 1e-9);
        loop.advance(2s);
        EXPECT_FALSE(state->playing());
    }
    EXPECT_EQ(loop.clock.waiting(), 0u);
    play("a.wav", "Speaker");
    state->stopPlaying();
    EXPECT_FALSE(state->playing());
    EXPECT_EQ(state->status(), "");
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
    state->play("a.wav", "Speaker");
    state->stopPlaying();
    loop.drain();
    EXPECT_FALSE(state->playing()) << "stopped before it began";
}

TEST_F(RecordingStateTest, ReadsTheFileWhileItPlays) {
    keep("a.wav", Samples(160'000, 5));
    play("a.wav", "Speaker");
    fs::resize_file(folder() / "a.wav", 44 + std::uintmax_t{2} * 100'000);
    loop.advance(6s);
    EXPECT_TRUE(state->playing());
    loop.advance(1s);
    EXPECT_FALSE(state->playing()) << "from 6.2 s on there is nothing";
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
}

TEST_F(RecordingStateTest, SaysWhatCannotBePlayed) {
    keep("a.wav", Samples(1600, 1));
    const auto outside = AppPaths::support() / "outside.wav";
    fs::copy(folder() / "a.wav", outside);
    fs::create_directory(folder() / "d.wav");
    std::ofstream(folder() / "text.wav") << std::string(100, 'x');
    for (const std::string name : {"../outside.wav", outside.c_str(), "d.wav", "text.wav", "none.wav", ""}) {
        play(name, "Speaker");
        EXPECT_EQ(state->status(), "Cannot play " + name + " on Speaker");
    }
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
}

} // namespace
} // namespace velto::test
