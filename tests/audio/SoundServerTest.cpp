// The backend against a real sound server of its own.
#include "VeltoPlatform/linux/PulseCatalogue.h"
#include "VeltoPlatform/linux/PulseMicrophone.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioPlayback.h"
#include "VeltoShared/audio/AudioRouting.h"
#include "tests/audio/SoundServerFixture.h"
#include "tests/support/AllocationCounter.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <limits>
#include <map>
#include <set>
#include <tuple>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

TEST(PulseCatalogue, pairsSidesByDescriptionAndKeepsIdentifiersApart) {
    const std::vector<PulseEndpoint> sinks{{"s1", "Card", 2}, {"s2", "Card", 6}, {"s3", "Speaker", 1}};
    const std::vector<PulseEndpoint> sources{{"c1", "Card", 1}, {"c2", "Mic", 2}};
    const auto devices = PulseCatalogue::devices(sinks, sources);
    ASSERT_EQ(devices.size(), 4u);
    EXPECT_EQ(devices[0].input.serverName, "c1");
    EXPECT_EQ(devices[1].input.channels, 0u);
    EXPECT_EQ(devices[3].name(), "Mic");
    const auto alone = PulseCatalogue::devices({sinks[2]}, {});
    EXPECT_EQ(alone[0].id, devices[2].id);

    // Enough names for hashes of 31 bits to meet.
    std::vector<PulseEndpoint> many;
    for (int i = 0; i < 200'000; ++i)
        many.push_back({"alsa_output." + std::to_string(i), std::to_string(i), 2});
    const auto identifiers = [&many] {
        std::map<std::string, AudioObjectID> all;
        for (const auto& device : PulseCatalogue::devices(many, {}))
            all[device.output.serverName] = device.id;
        return all;
    };
    const auto forwards = identifiers();
    std::ranges::reverse(many);
    EXPECT_EQ(identifiers(), forwards);
    std::set<AudioObjectID> values;
    for (const auto& [name, id] : forwards)
        values.insert(id);
    EXPECT_EQ(values.size(), many.size());
    EXPECT_FALSE(values.contains(0));
}

TEST_P(EachSoundServer, showsDevicesDefaultsAndProcesses) {
    std::set<std::string> channels;
    for (const auto& device : AudioDevices::all())
        channels.insert(device.name + " " + std::to_string(device.inputChannels) + "/" +
                        std::to_string(device.outputChannels));
    EXPECT_EQ(channels,
              (std::set<std::string>{"VeltoVoice 2ch Feed 0/2", "VeltoVoice 2ch Mic 2/0", "VeltoLoop 2ch 2/2",
                                     "Speaker 0/2", "Microphone 2/0", "Microphone Line 0/2"}));
    const auto mic = AudioDevices::find("VeltoVoice 2ch Mic").value();
    const auto speaker = AudioRouting::defaultOutputID();
    EXPECT_EQ(AudioRouting::defaultInputName() + " / " + AudioRouting::defaultOutputName(),
              "Microphone / Speaker");
    // A server on a busy machine may refuse, or take longer than anybody should wait.
    const auto becomesDefault = [&](AudioDirection direction, AudioObjectID device) {
        return eventually([&] { return hardware->setDefaultDevice(direction, device); });
    };
    EXPECT_TRUE(becomesDefault(AudioDirection::input, mic.id));
    EXPECT_TRUE(becomesDefault(AudioDirection::output, AudioDevices::find("VeltoLoop 2ch")->id));
    EXPECT_EQ(AudioRouting::defaultInputName() + " / " + AudioRouting::defaultOutputName(),
              "VeltoVoice 2ch Mic / VeltoLoop 2ch");
    EXPECT_FALSE(hardware->setDefaultDevice(AudioDirection::output, mic.id)); // it has no such side
    EXPECT_FALSE(hardware->setDefaultDevice(AudioDirection::input, 12345));
    EXPECT_TRUE(becomesDefault(AudioDirection::output, speaker.value()));
    EXPECT_EQ(AudioRouting::defaultOutputName(), "Speaker");

    EXPECT_EQ(hardware->processObject(std::numeric_limits<pid_t>::max()), 0u);
    const auto self = hardware->processObject(::getpid());
    ASSERT_TRUE(self && *self != 0);
    EXPECT_EQ(hardware->processIsRunningInput(*self), false);
    for (int i = 0; i < 10; ++i) // stopped before the server has made its stream
        const Ear brief("Microphone", 16000);
    {
        Ear ear("Microphone", 16000);
        ASSERT_TRUE(ear.hearsAnything());
        EXPECT_EQ(hardware->processIsRunningInput(*self), true);
    }
    // The end of a stream and the question travel on connections of their own.
    EXPECT_TRUE(eventually([&] { return hardware->processIsRunningInput(*self) == false; }));

    ASSERT_TRUE(server->restart());
    ASSERT_TRUE(waitForLine("server back"));
    EXPECT_EQ(AudioDevices::find("VeltoVoice 2ch Mic"), mic);
}

TEST_P(EachSoundServer, aToneKeepsItsLevelAndAllocatesNothing) {
    for (const auto& [output, input, played, captured] :
         {std::tuple{"VeltoVoice 2ch Feed", "VeltoVoice 2ch Mic", 24000.0, 16000.0},
          {"VeltoLoop 2ch", "VeltoLoop 2ch", 24000.0, 24000.0},
          {"Microphone Line", "Microphone", 48000.0, 16000.0}}) {
        auto playback = AudioPlayback::open(output, played, 2);
        ASSERT_TRUE(playback);
        const auto began = SteadyClock::now();
        Ear ear(input, captured);
        ASSERT_TRUE(ear);
        playback->write(tone(played, 4));
        playback->start();
        ASSERT_TRUE(ear.hearsAnything());
        const auto before = allocationCount();
        EXPECT_TRUE(ear.hearsLoud(20)) << input;
        EXPECT_EQ(allocationCount(), before) << input;
        EXPECT_NEAR(ear.loudness(), amplitude / std::numbers::sqrt2, 0.03 * amplitude) << input;
        EXPECT_GT(playback->stats().rendered, static_cast<std::int64_t>(played / 2));
        // Nothing that was there before: no more sound than time.
        const std::chrono::duration<double> passed = SteadyClock::now() - began;
        EXPECT_LE(ear.seconds(), passed.count() + 0.1) << input;
    }
}

TEST_P(EachSoundServer, aServerThatStartsLateOrAgainIsFound) {
    // One connection at a time: libpulse recycles memory between them in ways a thread sanitizer cannot see.
    disconnect();
    server->kill();
    connect();
    std::atomic<int> returns = 0;
    hardware->observeReturn([&] { ++returns; });
    EXPECT_TRUE(waitForLine("sound: no server: "));
    const auto asked = SteadyClock::now();
    EXPECT_EQ(hardware->devices(), std::nullopt);
    EXPECT_TRUE(AudioDevices::all().empty());
    EXPECT_EQ(AudioRouting::defaultInputID(), std::nullopt);
    EXPECT_FALSE(AudioCapture::open("VeltoLoop 2ch", 16000, 2, {}));
    EXPECT_LT(SteadyClock::now() - asked, PulseServer::answerLimit); // nobody waits for it
    ASSERT_TRUE(server->restart());
    const auto devices = PulseCatalogue::read(*connection);
    ASSERT_TRUE(devices) << "who asks does not wait for the next try";
    EXPECT_EQ(devices->size(), 6u);
    EXPECT_TRUE(eventually([&] { return returns == 1; }));

    auto playback = AudioPlayback::open("VeltoVoice 2ch Feed", 24000, 2);
    Ear ear("VeltoVoice 2ch Mic", 16000);
    playback->start();
    ASSERT_TRUE(ear.hearsAnything());
    ASSERT_TRUE(server->restart());
    playback->flush();
    playback->write(tone(24000, 6));
    EXPECT_NEAR(ear.loudness(), amplitude / std::numbers::sqrt2, 0.03 * amplitude);
    EXPECT_TRUE(eventually([&] { return returns == 2; }));
    hardware->observeReturn({});
}

TEST_P(EachSoundServer, aDeviceThatComesBackIsFoundByItsName) {
    const auto module =
        load("module-null-sink", "sink_name=extra sink_properties='device.description=Extra'");
    auto playback = AudioPlayback::open("Extra", 24000, 2);
    ASSERT_TRUE(playback);
    playback->start();
    const auto moves = [&] {
        const auto before = playback->stats().rendered;
        return eventually([&] { return playback->stats().rendered > before; });
    };
    ASSERT_TRUE(moves());
    unload(module);
    EXPECT_TRUE(waitForLine("sound: device Extra is gone"));
    EXPECT_FALSE(AudioPlayback::open("Extra", 24000, 2));
    // Under another name of the server's, as after a device has been plugged into another socket.
    load("module-null-sink", "sink_name=extra.2 sink_properties='device.description=Extra'");
    EXPECT_TRUE(waitForLine("sound: device Extra is back"));
    EXPECT_TRUE(moves());
}

TEST_P(EachSoundServer, aServerThatHangsHoldsNobodyUp) {
    Ear ear("VeltoLoop 2ch", 16000);
    ASSERT_TRUE(ear.hearsAnything());
    auto microphone = std::make_unique<PulseMicrophone>(connection);
    const auto mayRecord = [&] { return microphone->status().authorization; };
    ASSERT_TRUE(eventually([&] { return mayRecord() == MicrophoneAuthorization::authorized; }));
    ::kill(server->processes().back().pid(), SIGSTOP);
    const auto asked = SteadyClock::now();
    EXPECT_TRUE(AudioDevices::all().empty());
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(AudioRouting::defaultInputName(), "");
        hardware->setDefaultDevice(AudioDirection::input, 1);
        EXPECT_EQ(microphone->status().reason, "the sound server does not answer");
    }
    {
        Ear other("VeltoLoop 2ch", 16000);
        EXPECT_FALSE(other);
    }
    EXPECT_LT(SteadyClock::now() - asked, 2s); // one limit, and not one for each question
    EXPECT_TRUE(waitForLine("sound: device VeltoLoop 2ch stands still"));
    ::kill(server->processes().back().pid(), SIGCONT);
    EXPECT_TRUE(waitForLine("sound: server answers again"));
    EXPECT_TRUE(ear.hearsAnything());
    EXPECT_TRUE(waitForLine("sound: device VeltoLoop 2ch is back"));
    EXPECT_EQ(AudioRouting::defaultInputName(), "Microphone");
    EXPECT_TRUE(eventually([&] { return mayRecord() == MicrophoneAuthorization::authorized; }));
    ::kill(server->processes().back().pid(), SIGSTOP);
    mayRecord();
    microphone.reset(); // with its question still open
    ::kill(server->processes().back().pid(), SIGCONT);
}

TEST_P(EachSoundServer, aUnitWithoutADeviceRefusesAndOneThatPlaysMayBeTheLast) {
    auto unit = units->instantiate();
    EXPECT_NE(unit->setCurrentDevice(1), kAudioNoError);
    EXPECT_NE(unit->initialize(), kAudioNoError);
    EXPECT_NE(unit->start(), kAudioNoError);

    // The last owner of the connection, that is.
    auto playback = AudioPlayback::open("Speaker", 24000, 2);
    playback->start();
    disconnect();
    server->kill();
    playback.reset();
}

class PipeWireServer : public SoundServer {
  protected:
    rehearsal::SoundServerKind kind() const override { return rehearsal::SoundServerKind::pipeWire; }
};

TEST_F(PipeWireServer, withoutItsSessionManagerASilentDeviceIsSaidAndComesBack) {
    Ear early("VeltoLoop 2ch", 16000);
    ASSERT_TRUE(early.hearsAnything());
    std::next(server->processes().begin())->kill();
    Ear late("VeltoVoice 2ch Mic", 16000);
    ASSERT_TRUE(late);
    EXPECT_TRUE(waitForLine("sound: device VeltoVoice 2ch Mic stands still"));
    EXPECT_FALSE(hardware->setDefaultDevice(AudioDirection::input,
                                            AudioDevices::find("VeltoVoice 2ch Mic").value().id))
        << "accepted, but nobody acts on it";
    ASSERT_TRUE(server->restart());
    EXPECT_TRUE(early.hearsAnything());
    EXPECT_TRUE(late.hearsAnything());
    EXPECT_TRUE(waitForLine("sound: device VeltoVoice 2ch Mic is back"));
}

INSTANTIATE_TEST_SUITE_P(On, EachSoundServer, bothKinds, nameOfKind);

} // namespace
} // namespace velto::test
