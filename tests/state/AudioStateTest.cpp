#include "VeltoApp/state/AudioState.h"

#include "tests/state/StateFixture.h"

namespace velto::test {
namespace {

TEST_F(StateTest, SoundIsShownAsItIsAtEachLook) {
    auto state = std::make_shared<AudioState>();
    const auto look = [&] {
        state->refresh();
        state->refresh();
        loop.drain();
    };
    look();
    EXPECT_EQ(state->inputDevices(), (Notes{"Microphone", "VeltoVoice 2ch Mic", "VeltoLoop 2ch"}));
    EXPECT_EQ(state->outputDevices(), (Notes{"Speaker", "VeltoVoice 2ch Feed", "VeltoLoop 2ch"}));
    EXPECT_EQ(state->status(), "Bridge ready (routed only while a call is active)");
    computer.audio.removeDevice("VeltoLoop 2ch");
    look();
    EXPECT_FALSE(state->bridgeInstalled());
    computer.audio.faults.deviceListFails = true;
    look();
    EXPECT_EQ(state->outputDevices(), Notes{});
    state->refresh();
    state.reset();
    loop.drain();
}

} // namespace
} // namespace velto::test
