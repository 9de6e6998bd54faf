#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/audio/AudioDevices.h"
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

TEST_F(DevicesAndBridge, theFirstOfAnExactNameIsFound) {
    const auto first = audio.addDevice("Twin", 1, 0);
    audio.addDevice({0, "Twin", {2, 6}, {}});
    EXPECT_EQ(AudioDevices::find("Twin"), (AudioDeviceInfo{first, "Twin", 1, 0}));
    EXPECT_EQ(AudioDevices::all().at(1).inputChannels, 8);
    for (const char* wrong : {"twin", "Twi", "Twin ", ""})
        EXPECT_FALSE(AudioDevices::find(wrong)) << wrong;
    audio.faults.nameFails = audio.faults.configurationFails = {first};
    EXPECT_EQ(AudioDevices::find("Unknown"), (AudioDeviceInfo{first, "Unknown", 0, 0}));
}

TEST_F(DevicesAndBridge, inputOnlyLeavesTheOutputAndSetsNothingTwice) {
    audio.addUsualDevices();
    makeDefault("VeltoVoice 2ch Mic", "Speaker");
    const auto changes = audio.defaultChanges().size();
    AudioBridge::enforce(true);
    EXPECT_EQ(audio.defaultChanges().size(), changes);
    EXPECT_FALSE(preferences.boolean("bridgeActive"));

    makeDefault("Microphone", "VeltoLoop 2ch");
    const auto before = audio.defaultChanges().size();
    AudioBridge::enforce(false);
    EXPECT_EQ(audio.defaultChanges().size(), before + 1);
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
    AudioRouting::setDefaultInput(id("VeltoLoop 2ch"));
    EXPECT_FALSE(AudioBridge::restoreIfNeeded());
    EXPECT_EQ(defaults(), "VeltoLoop 2ch / Speaker") << "restored once, the choice is the user's";
}

} // namespace
} // namespace velto::test
