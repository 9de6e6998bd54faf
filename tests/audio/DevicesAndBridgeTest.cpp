#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioProcess.h"
#include "VeltoShared/audio/AudioRouting.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

class DevicesAndBridge : public ::testing::Test, protected TestComputer {
  protected:
    AudioObjectID id(std::string_view name) { return AudioDevices::find(name).value().id; }
    void makeDefault(std::string_view input, std::string_view output) {
        AudioRouting::setDefaultInput(id(input));
        AudioRouting::setDefaultOutput(id(output));
    }
    std::string defaults() {
        return AudioRouting::defaultInputName() + " / " + AudioRouting::defaultOutputName();
    }
};

TEST_F(DevicesAndBridge, catalogueListsEverythingAndFindsExactNames) {
    const auto first = audio.addDevice("Twin", 1, 0);
    audio.addDevice("Twin", 2, 0);
    const auto wide = audio.addDevice({0, "Wide", {2, 6}, {}});
    const auto nameless = audio.addDevice("lost", 0, 2);
    const auto mute = audio.addDevice("Mute", 2, 2);
    audio.faults.nameFails = {nameless};
    audio.faults.configurationFails = {mute};

    EXPECT_EQ(AudioDevices::all().size(), 5u);
    EXPECT_EQ(AudioDevices::find("Twin")->id, first);
    EXPECT_EQ(AudioDevices::find("Wide")->inputChannels, 8);
    EXPECT_EQ(AudioDevices::find("Unknown"), (AudioDeviceInfo{nameless, "Unknown", 0, 2}));
    EXPECT_EQ(AudioDevices::find("Mute"), (AudioDeviceInfo{mute, "Mute", 0, 0}));
    for (const char* wrong : {"twin", "Twi", "Twin ", ""})
        EXPECT_FALSE(AudioDevices::find(wrong)) << wrong;
    EXPECT_EQ(AudioDevices::name(wide), "Wide");
    EXPECT_EQ(AudioDevices::name(999), "Unknown");

    audio.faults.deviceListFails = true;
    EXPECT_TRUE(AudioDevices::all().empty());
}

TEST_F(DevicesAndBridge, switchesAndRestoresAcrossRepeatedCalls) {
    audio.addUsualDevices();
    const auto full = AudioBridge::enforceSavingPrevious(false);
    EXPECT_TRUE(full.ok);
    EXPECT_EQ(full.message, "Bridge routing OK");
    EXPECT_EQ(full.input, "VeltoVoice 2ch Mic");
    EXPECT_EQ(full.output, "VeltoLoop 2ch");
    // A second call before any restore must not save the virtual devices as the user's own.
    AudioBridge::enforceSavingPrevious(true);
    EXPECT_TRUE(AudioBridge::restoreIfNeeded());
    EXPECT_EQ(defaults(), "Microphone / Speaker");

    AudioRouting::setDefaultInput(id("VeltoLoop 2ch"));
    EXPECT_FALSE(AudioBridge::restoreIfNeeded());
    EXPECT_EQ(defaults(), "VeltoLoop 2ch / Speaker");
}

TEST_F(DevicesAndBridge, inputOnlyLeavesTheOutputAndSetsNothingTwice) {
    audio.addUsualDevices();
    makeDefault("VeltoVoice 2ch Mic", "Speaker");
    const auto changes = audio.defaultChanges().size();
    const auto status = AudioBridge::enforce(true);
    EXPECT_EQ(status.message, "Uplink routing (input only)");
    EXPECT_EQ(status.output, "Speaker");
    EXPECT_EQ(audio.defaultChanges().size(), changes);
    EXPECT_FALSE(preferences.boolean("bridgeActive"));

    makeDefault("Microphone", "VeltoLoop 2ch");
    const auto before = audio.defaultChanges().size();
    AudioBridge::enforce(false);
    EXPECT_EQ(audio.defaultChanges().size(), before + 1);
}

TEST_F(DevicesAndBridge, missingDevicesTouchNothingButAreRemembered) {
    audio.addUsualDevices();
    audio.removeDevice("VeltoLoop 2ch");
    EXPECT_FALSE(AudioBridge::installed());
    const auto status = AudioBridge::enforceSavingPrevious(false);
    EXPECT_FALSE(status.ok);
    EXPECT_EQ(status.message, "Bridge devices not installed — install in Settings → Debug → Drivers");
    EXPECT_EQ(status.input, "Microphone");
    EXPECT_EQ(status.output, "Speaker");
    EXPECT_TRUE(audio.defaultChanges().empty());
    EXPECT_TRUE(AudioBridge::restoreIfNeeded());

    audio.addDevice("VeltoLoop 2ch", 2, 2);
    audio.removeDevice("VeltoVoice 2ch Feed"); // not looked at
    EXPECT_TRUE(AudioBridge::installed());
}

TEST_F(DevicesAndBridge, restoresOnlyWhatWasSavedAndFits) {
    audio.addUsualDevices();
    const auto speaker = std::int64_t{id("Speaker")};
    preferences.set("bridgePrevInput", std::int64_t{77}); // left from an earlier switch; the device is gone
    audio.faults.defaultReadFails = true;
    AudioBridge::enforceSavingPrevious(false); // saves neither, but is active
    audio.faults.defaultReadFails = false;
    EXPECT_EQ(preferences.integer("bridgePrevInput"), 77);
    EXPECT_EQ(preferences.object("bridgePrevOutput"), std::nullopt);
    EXPECT_EQ(defaults(), "VeltoVoice 2ch Mic / VeltoLoop 2ch");
    EXPECT_TRUE(AudioBridge::restoreIfNeeded());
    EXPECT_EQ(defaults(), "VeltoVoice 2ch Mic / VeltoLoop 2ch");

    const auto microphone = std::int64_t{id("Microphone")};
    for (const std::int64_t unfit :
         {std::int64_t{-1}, microphone + (std::int64_t{1} << 32), std::int64_t{0}}) {
        preferences.set("bridgeActive", true);
        preferences.set("bridgePrevInput", unfit);
        preferences.set("bridgePrevOutput", speaker);
        EXPECT_TRUE(AudioBridge::restoreIfNeeded());
        EXPECT_EQ(defaults(), "VeltoVoice 2ch Mic / Speaker") << unfit;
        EXPECT_EQ(preferences.integer("bridgePrevOutput"), speaker);
    }
}

TEST_F(DevicesAndBridge, theFirstProcessOfAnIdentifierIsAsked) {
    desktop.launch("com.example.phone", 41);
    desktop.launch("com.example.phone", 42);
    audio.setProcess(42, 7, true);
    EXPECT_EQ(AudioProcess::objectID("com.example.phone"), std::nullopt);
    EXPECT_FALSE(AudioProcess::isRunningInput("com.example.phone"));
    audio.setProcess(41, 6, true);
    EXPECT_EQ(AudioProcess::objectID("com.example.phone"), 6u);
    EXPECT_TRUE(AudioProcess::isRunningInput("com.example.phone"));
    EXPECT_FALSE(AudioProcess::isRunningInput("com.example"));
    audio.setProcess(41, 6, false);
    EXPECT_FALSE(AudioProcess::isRunningInput("com.example.phone"));
    audio.faults.processReadFails = true;
    EXPECT_FALSE(AudioProcess::isRunningInput("com.example.phone"));
}

} // namespace
} // namespace velto::test
