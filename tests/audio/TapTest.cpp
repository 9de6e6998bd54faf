#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/ProcessTap.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

namespace velto::test {
namespace {

constexpr const char* phone = "com.apple.mobilephone";

class Tap : public ::testing::Test, protected TestComputer {
  protected:
    Tap() {
        audio.addUsualDevices();
        desktop.launch("org.other", 40);
        desktop.launch(phone, 41);
        desktop.launch(phone, 42);
        audio.setProcess(40, 60, false);
        audio.setProcess(41, 61, false);
        audio.setProcess(42, 62, false);
    }
    bool nothingIsThere() { return audio.taps.taps().empty() && audio.taps.aggregates().empty(); }
};

TEST_F(Tap, isADeviceOfItsOwnAndTakenDownInOrder) {
    std::set<std::string> uids;
    std::vector<std::string> gone;
    for (const bool mute : {true, false}) {
        const auto tap = ProcessTap::create(phone, "VeltoTap", mute);
        ASSERT_TRUE(tap);
        const auto device = tap->deviceID();
        EXPECT_EQ(AudioDevices::find(tap->deviceName()), (AudioDeviceInfo{device, "VeltoTap", 2, 0}));
        EXPECT_EQ(audio.taps.processesOf(device), std::vector<AudioObjectID>{61});
        uids.insert(audio.taps.aggregates().at(device).uid);
        const auto [id, description] = *audio.taps.taps().begin();
        EXPECT_EQ(description.mute, mute ? TapMute::mutedWhenTapped : TapMute::unmuted);

        tap->destroy();
        tap->destroy();
        gone.insert(gone.end(), {"aggregate " + std::to_string(device), "tap " + std::to_string(id)});
    }
    EXPECT_EQ(audio.taps.destroyed(), gone);
    EXPECT_EQ(uids.size(), 2u);
    ProcessTap::create(phone, "VeltoTap", false);
    EXPECT_TRUE(nothingIsThere()) << "destruction destroys";
}

TEST_F(Tap, everyFailureLeavesNothingBehind) {
    EXPECT_FALSE(ProcessTap::create("com.apple.mobilephon", "VeltoTap", true));
    const std::vector<std::function<void()>> faults{
        [&] { audio.taps.faults.noPermission = true; },    [&] { audio.taps.faults.tapIsNone = true; },
        [&] { audio.taps.faults.uidFails = true; },        [&] { audio.taps.faults.aggregateFails = true; },
        [&] { audio.taps.faults.aggregateIsNone = true; }, [&] { audio.faults.processReadFails = true; },
        [&] { audio.setProcess(41, 0, false); }, // the second of that name is not asked
    };
    for (std::size_t i = 0; i < faults.size(); ++i) {
        audio.taps.faults = {};
        faults[i]();
        EXPECT_FALSE(ProcessTap::create(phone, "VeltoTap", true)) << i;
        EXPECT_TRUE(nothingIsThere()) << i;
    }
    audio.faults = {};
    audio.taps.faults = {};
    audio.setProcess(41, 61, false);
    const auto tap = ProcessTap::create(phone, "VeltoTap", true);
    ASSERT_TRUE(tap);
    audio.taps.faults.destroyingFails = true; // ignored
    tap->destroy();
    audio.taps.faults = {};
    tap->destroy();
    EXPECT_EQ(audio.taps.destroyed().size(), 3u) << "one try, after the three of failed creations";
}

} // namespace
} // namespace velto::test
