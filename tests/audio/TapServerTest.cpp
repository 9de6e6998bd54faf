// Taps against a real sound server of its own, on a program that plays with the server's own tools.
#include "VeltoPlatform/ProcessTaps.h"
#include "VeltoPlatform/linux/PulseCatalogue.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioPlayback.h"
#include "rehearsal/process/ChildProcess.h"
#include "tests/audio/SoundServerFixture.h"
#include "tests/support/AllocationCounter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using rehearsal::ChildProcess;
using rehearsal::ChildProgram;

constexpr double level = amplitude / std::numbers::sqrt2;
constexpr double tolerance = 0.03 * amplitude;

class TapServer : public SoundServer {
  protected:
    void SetUp() override {
        SoundServer::SetUp();
        if (HasFatalFailure())
            return;
        for (const int frequency : {700, 1000}) {
            const auto samples = tone(24000, 60, frequency);
            std::ofstream file(root() / (std::to_string(frequency) + ".raw"), std::ios::binary);
            file.write(reinterpret_cast<const char*>(samples.data()),
                       static_cast<std::streamsize>(samples.size() * sizeof samples[0]));
        }
        listenToSpeaker();
    }
    void TearDown() override {
        phone.reset();
        SoundServer::TearDown();
    }

    std::filesystem::path root() const { return folder_.path(); }
    void listenToSpeaker() {
        load("module-remap-source",
             "source_name=speaker_ear master=speaker.monitor source_properties='device.description=\"At the "
             "speaker\"'");
    }
    std::optional<ChildProcess> start(std::vector<std::string> arguments) {
        ChildProgram program;
        program.arguments = std::move(arguments);
        program.environment = server->clientEnvironment();
        program.environment["PATH"] = "/usr/local/bin:/usr/bin:/bin";
        program.environment["HOME"] = root();
        program.outputFile = program.errorFile = root() / "phone.out";
        return ChildProcess::start(program);
    }
    /// A program without sound of its own; what it is told to run are its children.
    void startPhone() {
        const auto commands = root() / "commands";
        ASSERT_EQ(::mkfifo(commands.c_str(), 0600), 0);
        commands_ = FileDescriptor(::open(commands.c_str(), O_RDWR | O_CLOEXEC));
        phone =
            start({"sh", "-c", "while read -r line; do eval \"$line\"; done <'" + commands.string() + "'"});
        ASSERT_TRUE(phone);
    }
    void tell(const std::string& command) {
        const auto line = command + '\n';
        ASSERT_EQ(::write(commands_.get(), line.data(), line.size()), static_cast<ssize_t>(line.size()));
    }
    std::string player(int frequency) const {
        return "pacat --playback --raw --rate=24000 --channels=1 --latency-msec=50 '" +
               (root() / (std::to_string(frequency) + ".raw")).string() + "'";
    }
    /// Starts a player as a child of the phone; its process number is in the shell's variable `name`.
    void play(int frequency, const std::string& name) { tell(player(frequency) + " & " + name + "=$!"); }
    void end(const std::string& name) { tell("kill $" + name + "; wait $" + name + " 2>/dev/null"); }

    AudioObjectID createTap(pid_t process, TapMute mute) {
        return taps
            ->createProcessTap(
                {"VeltoTap", {static_cast<AudioObjectID>(process)}, false, true, false, true, mute})
            .value_or(0);
    }
    AudioObjectID createDevice(AudioObjectID tap) {
        return taps
            ->createAggregateDevice(
                {"VeltoTap", "velto.tap.1", true, false, {taps->tapUID(tap).value_or("")}})
            .value_or(0);
    }
    void destroy(AudioObjectID tap, AudioObjectID device) {
        EXPECT_TRUE(taps->destroyAggregateDevice(device));
        EXPECT_TRUE(taps->destroyProcessTap(tap));
    }

    std::optional<ChildProcess> phone;

  private:
    FileDescriptor commands_;
};

TEST_F(TapServer, isAPrivateDeviceAndRefusesWhatItCannotServe) {
    const auto self = ::getpid();
    const auto tap = createTap(self, TapMute::unmuted);
    const auto device = createDevice(tap);
    ASSERT_NE(device, 0u);
    EXPECT_EQ(AudioDevices::find("VeltoTap"), (AudioDeviceInfo{device, "VeltoTap", 2, 0}));
    EXPECT_FALSE(hardware->setDefaultDevice(AudioDirection::input, device));
    EXPECT_EQ(PulseCatalogue::read(*connection)->size() + 1, AudioDevices::all().size());
    EXPECT_EQ(createDevice(tap), 0u) << "the identifier is taken";
    destroy(tap, device);
    EXPECT_FALSE(taps->destroyAggregateDevice(device));
    EXPECT_FALSE(taps->destroyProcessTap(tap));
    EXPECT_EQ(taps->tapUID(tap), std::nullopt);
    EXPECT_EQ(createDevice(tap), 0u);
    EXPECT_FALSE(AudioDevices::find("VeltoTap"));

    ProcessTapDescription wrong{"VeltoTap", {static_cast<AudioObjectID>(self)}, false, true, false, true, {}};
    for (const auto& change : std::vector<std::function<void(ProcessTapDescription&)>>{
             [](auto& tap) { tap.processes.clear(); }, [](auto& tap) { tap.processes = {0x3fffffff}; },
             [](auto& tap) { tap.exclusive = true; }, [](auto& tap) { tap.isPrivate = false; },
             [](auto& tap) { tap.mono = true; }, [](auto& tap) { tap.mixdown = false; }}) {
        auto description = wrong;
        change(description);
        EXPECT_FALSE(taps->createProcessTap(description));
    }
    server->kill();
    ASSERT_TRUE(waitForLine("server lost"));
    EXPECT_FALSE(taps->createProcessTap(wrong));
}

TEST_F(TapServer, hearsAllThatTheProgramPlaysAndLeavesItAudible) {
    startPhone();
    const auto tap = createTap(phone->pid(), TapMute::unmuted);
    const auto device = createDevice(tap);
    Ear ear("VeltoTap", 16000);
    Ear second("VeltoTap", 24000);
    Ear speaker("At the speaker", 16000);
    ASSERT_TRUE(ear && second && speaker);
    EXPECT_TRUE(ear.hearsSilence()) << "nothing is played yet";

    play(1000, "a");
    EXPECT_NEAR(ear.loudness(), level, tolerance);
    EXPECT_NEAR(second.loudness(), level, tolerance);
    EXPECT_NEAR(speaker.loudness(), level, tolerance);
    const auto before = allocationCount();
    ear.forget();
    EXPECT_TRUE(ear.hearsLoud(20));
    EXPECT_EQ(allocationCount(), before);

    play(700, "b");
    ear.forget();
    ASSERT_TRUE(ear.hearsLoud(50));
    EXPECT_NEAR(ear.loudness(), level * std::numbers::sqrt2, tolerance) << "two at once are summed";
    end("a");
    EXPECT_TRUE(ear.hearsLoud(50));
    ear.forget();
    EXPECT_NEAR(ear.loudness(), level, tolerance);
    end("b");
    EXPECT_TRUE(ear.hearsSilence());
    play(1000, "a");
    EXPECT_NEAR(ear.loudness(), level, tolerance) << "a stream that was started again";

    // Another program is not heard.
    end("a");
    EXPECT_TRUE(ear.hearsSilence());
    const auto stranger = start({"sh", "-c", player(1000)});
    speaker.forget();
    EXPECT_TRUE(speaker.hearsLoud(50));
    EXPECT_TRUE(ear.hearsSilence());

    const auto recording = [&] {
        return hardware->processIsRunningInput(static_cast<AudioObjectID>(phone->pid()));
    };
    EXPECT_EQ(recording(), false);
    tell("parec >/dev/null & r=$!");
    const auto until = std::chrono::steady_clock::now() + patience;
    while (recording() != true && std::chrono::steady_clock::now() < until)
        std::this_thread::yield();
    EXPECT_EQ(recording(), true) << "a child of the program records";

    destroy(tap, device);
    ear.forget();
    EXPECT_FALSE(ear.hearsAnything(300ms));
}

TEST_F(TapServer, comesBackWithTheServer) {
    startPhone();
    const auto device = createDevice(createTap(phone->pid(), TapMute::unmuted));
    ASSERT_NE(device, 0u);
    Ear ear("VeltoTap", 16000);
    play(1000, "a");
    EXPECT_NEAR(ear.loudness(), level, tolerance);
    server->kill();
    ASSERT_TRUE(waitForLine("sound: server lost"));
    EXPECT_FALSE(ear.hearsAnything(300ms) && ear.hearsAnything(300ms));
    ASSERT_TRUE(server->restart());
    EXPECT_TRUE(ear.hearsSilence());
    play(1000, "a");
    ear.forget();
    EXPECT_NEAR(ear.loudness(), level, tolerance);
}

} // namespace
} // namespace velto::test
