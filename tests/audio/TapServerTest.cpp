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

#include <cmath>
#include <fstream>
#include <set>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using rehearsal::ChildProcess;
using rehearsal::ChildProgram;

constexpr double level = amplitude / std::numbers::sqrt2;
constexpr double tolerance = 0.03 * amplitude;

class TapServer : public EachSoundServer {
  protected:
    void SetUp() override {
        EachSoundServer::SetUp();
        if (HasFatalFailure())
            return;
        for (const int frequency : {700, 1000}) {
            const auto samples = tone(24000, 60, frequency);
            std::ofstream file(root() / (std::to_string(frequency) + ".raw"), std::ios::binary);
            file.write(reinterpret_cast<const char*>(samples.data()),
                       static_cast<std::streamsize>(samples.size() * sizeof samples[0]));
        }
        listenTo("speaker");
    }
    void TearDown() override {
        phone.reset();
        EachSoundServer::TearDown();
    }

    std::filesystem::path root() const { return folder_.path(); }
    /// A source of what a sink plays, called "At the …".
    void listenTo(const std::string& sink) {
        const auto arguments = "source_name=" + sink + "_ear master=" + sink +
                               ".monitor source_properties='device.description=\"At the " + sink + "\"'";
        loadInTime("module-remap-source", arguments.c_str());
        EXPECT_TRUE(eventually([&] { return AudioDevices::find("At the " + sink).has_value(); }));
    }
    /// A server on a busy machine may take longer than anybody should wait.
    void loadInTime(const char* module, const char* arguments) {
        EXPECT_TRUE(eventually([&] { return load(module, arguments) != PA_INVALID_INDEX; }));
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

TEST_P(TapServer, isAPrivateDeviceAndRefusesWhatItCannotServe) {
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

TEST_P(TapServer, hearsAllThatTheProgramPlaysAndLeavesItAudible) {
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
    end("a");
    EXPECT_TRUE(ear.hearsSilence());

    tell("sh -c \"" + player(1000) + " & echo \\$! >'" + (root() / "orphan").string() + "'; wait\" & w=$!");
    EXPECT_TRUE(ear.hearsLoud(50));
    end("w");
    play(700, "b");
    EXPECT_TRUE(ear.hearsLoud(100));
    end("b");
    ear.forget();
    EXPECT_NEAR(ear.loudness(), level, tolerance)
        << "whoever started it has ended, the stream is still the program's";
    tell("kill $(cat '" + (root() / "orphan").string() + "')");
    EXPECT_TRUE(ear.hearsSilence());

    // Another program is not heard.
    const auto stranger = start({"sh", "-c", player(1000)});
    speaker.forget();
    EXPECT_TRUE(speaker.hearsLoud(50));
    EXPECT_TRUE(ear.hearsSilence());

    const auto recording = [&] {
        return hardware->processIsRunningInput(static_cast<AudioObjectID>(phone->pid()));
    };
    EXPECT_EQ(recording(), false);
    tell("parec >/dev/null & r=$!");
    const auto until = std::chrono::steady_clock::now() + kPatience;
    while (recording() != true && std::chrono::steady_clock::now() < until)
        std::this_thread::yield();
    EXPECT_EQ(recording(), true) << "a child of the program records";

    destroy(tap, device);
    ear.forget();
    EXPECT_FALSE(ear.hearsAnything(300ms));
}

/// With a phone that is heard at the speaker.
class MutedTap : public TapServer {
  protected:
    void SetUp() override {
        TapServer::SetUp();
        startPhone();
        play(1000, "a");
        speaker = std::make_unique<Ear>("At the speaker", 16000);
        ASSERT_NEAR(speaker->loudness(), level, tolerance);
    }
    void TearDown() override {
        speaker.reset();
        TapServer::TearDown();
    }
    bool speakerIsLoud() {
        speaker->forget();
        return std::abs(speaker->loudness() - level) < tolerance;
    }
    /// As other clients of the server see them.
    std::multiset<std::string> sinks() {
        std::multiset<std::string> names;
        connection->ask([&](pa_context* context) {
            return std::vector<pa_operation*>{pa_context_get_sink_info_list(
                context,
                [](pa_context*, const pa_sink_info* sink, int end, void* data) {
                    if (end == 0)
                        static_cast<std::multiset<std::string>*>(data)->insert(sink->name);
                },
                &names)};
        });
        return names;
    }
    template <class Condition>
    bool sinksBecome(Condition&& condition) {
        return eventually([&] {
            const auto all = sinks();
            return !all.empty() &&
                   condition(all); // never without any, but for a server that has not answered
        });
    }
    bool tapSinkGoes() {
        return sinksBecome([](const auto& all) { return !all.contains("velto_tap"); });
    }

    std::unique_ptr<Ear> speaker;
};

TEST_P(MutedTap, silencesTheProgramWhileCapturedAndGivesItBack) {
    loadInTime("module-null-sink", "sink_name=headset norewinds=1");
    listenTo("headset");
    Ear headset("At the headset", 16000);
    tell("PULSE_SINK=headset " + player(700) + " & b=$!");
    EXPECT_NEAR(headset.loudness(), level, tolerance);

    const auto tap = createTap(phone->pid(), TapMute::mutedWhenTapped);
    const auto device = createDevice(tap);
    ASSERT_NE(device, 0u);
    EXPECT_TRUE(speakerIsLoud()) << "nobody captures yet";
    EXPECT_EQ(createTap(phone->pid(), TapMute::mutedWhenTapped), 0u) << "one at a time";
    EXPECT_EQ(hardware->devices()->size(), 6u + 1 + 3) << "the sink of the tap is no device";
    {
        Ear ear("VeltoTap", 16000);
        EXPECT_TRUE(speaker->hearsSilence());
        EXPECT_TRUE(headset.hearsSilence());
        ear.forget();
        EXPECT_NEAR(ear.loudness(), level * std::numbers::sqrt2, tolerance);
        end("a");
        play(1000, "a"); // a new stream is muted as well
        EXPECT_TRUE(speaker->hearsSilence());
        ear.forget();
        EXPECT_NEAR(ear.loudness(), level * std::numbers::sqrt2, tolerance);
    }
    EXPECT_TRUE(speakerIsLoud()) << "nobody captures any more";
    { const Ear brief("VeltoTap", 16000); }
    Ear again("VeltoTap", 16000);
    EXPECT_TRUE(speaker->hearsSilence());
    destroy(tap, device);
    EXPECT_TRUE(speakerIsLoud());
    headset.forget();
    EXPECT_NEAR(headset.loudness(), level, tolerance) << "back where it was";
    EXPECT_FALSE(sinks().contains("velto_tap"));
    EXPECT_FALSE(taps->sweep());
}

TEST_P(MutedTap, hearsAStreamThatRefusesToBeMuted) {
    end("a"); // the phone is a child of ours, and would be heard too
    // Our own streams do.
    auto playback = AudioPlayback::open("Speaker", 24000, 2);
    playback->write(tone(24000, 30));
    playback->start();
    const auto device = createDevice(createTap(::getpid(), TapMute::mutedWhenTapped));
    ASSERT_NE(device, 0u);
    Ear ear("VeltoTap", 16000);
    EXPECT_NEAR(ear.loudness(), level, tolerance);
    EXPECT_TRUE(waitForLine("sound: tap: a stream of the tapped program cannot be muted"));
}

TEST_P(MutedTap, isMadeAgainWhenTheServerReturns) {
    const auto tap = createTap(phone->pid(), TapMute::mutedWhenTapped);
    const auto device = createDevice(tap);
    Ear ear("VeltoTap", 16000);
    EXPECT_NEAR(ear.loudness(), level, tolerance);
    ASSERT_TRUE(server->restart());
    ASSERT_TRUE(waitForLine("sound: server back"));
    listenTo("speaker");
    ASSERT_TRUE(ear.hearsAnything());
    play(1000, "a");
    ear.forget();
    EXPECT_NEAR(ear.loudness(), level, tolerance);
    EXPECT_TRUE(speaker->hearsSilence());
    destroy(tap, device);
    EXPECT_TRUE(speakerIsLoud());
    EXPECT_FALSE(sinks().contains("velto_tap"));

    const auto brief = createTap(phone->pid(), TapMute::mutedWhenTapped);
    for (const auto* gone : {"while it is being made", "while a unit still holds a tap that was"}) {
        logged.change([this] { lines.clear(); });
        ASSERT_TRUE(server->restart());
        ASSERT_TRUE(waitForLine("sound: server back"));
        taps->destroyProcessTap(brief);
        EXPECT_TRUE(tapSinkGoes()) << gone;
    }
}

TEST_P(MutedTap, isNotLeftBehindByAServerThatAnswersTooLate) {
    // The server is quick: it is not always stopped before it has answered.
    for (const auto* later : {"sink_name=later", "sink_name=later2", "sink_name=later3"}) {
        const auto tap = createTap(phone->pid(), TapMute::mutedWhenTapped);
        ASSERT_NE(tap, 0u);
        logged.change([this] { lines.clear(); });
        ASSERT_TRUE(server->restart());
        const auto isBack = [this] {
            return logged.change([this] {
                return std::ranges::any_of(
                    lines, [](const auto& line) { return line.starts_with("sound: server back"); });
            });
        };
        for (const auto begin = std::chrono::steady_clock::now();
             !isBack() && std::chrono::steady_clock::now() - begin < kPatience;)
            std::this_thread::yield();
        ::kill(server->processes().back().pid(), SIGSTOP);
        taps->destroyProcessTap(tap);
        ::kill(server->processes().back().pid(), SIGCONT);
        // Made after the tap's, if that was still made.
        loadInTime("module-null-sink", later);
        EXPECT_TRUE(tapSinkGoes());
    }
}

TEST_P(MutedTap, whatAKilledRunHasMutedIsSwept) {
    EXPECT_FALSE(taps->sweep());
    auto holder = start({VELTO_TAP_HOLDER, std::to_string(phone->pid())});
    ASSERT_TRUE(holder);
    EXPECT_TRUE(speaker->hearsSilence());
    EXPECT_FALSE(taps->sweep()) << "its owner lives";
    const auto before = sinks();
    EXPECT_EQ(createTap(phone->pid(), TapMute::mutedWhenTapped), 0u);
    EXPECT_TRUE(waitForLine("sound: tap: the tapped program cannot be muted"));
    EXPECT_TRUE(sinksBecome([&](const auto& all) { return all == before; })) << "the attempt leaves nothing";

    holder->kill();
    EXPECT_TRUE(speaker->hearsSilence()) << "nobody has given it back";
    EXPECT_TRUE(taps->sweep());
    EXPECT_TRUE(speakerIsLoud());
    EXPECT_FALSE(sinks().contains("velto_tap"));
    EXPECT_FALSE(taps->sweep());
}

INSTANTIATE_TEST_SUITE_P(On, TapServer, bothKinds, nameOfKind);
INSTANTIATE_TEST_SUITE_P(On, MutedTap, bothKinds, nameOfKind);

} // namespace
} // namespace velto::test
