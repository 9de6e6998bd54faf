#include "VeltoApp/state/AudioState.h"

#include "tests/state/StateFixture.h"

namespace velto::test {
namespace {

struct AudioStateTest : StateTest {
    std::shared_ptr<AudioState> state = std::make_shared<AudioState>();
};

TEST_F(AudioStateTest, ShowsWhatIsThereAtEachLook) {
    EXPECT_EQ(state->status(), "");
    state->refresh();
    loop.drain();
    EXPECT_EQ(state->inputDevices(), (Notes{"Microphone", "VeltoVoice 2ch Mic", "VeltoLoop 2ch"}));
    EXPECT_EQ(state->outputDevices(), (Notes{"Speaker", "VeltoVoice 2ch Feed", "VeltoLoop 2ch"}));
    EXPECT_EQ(state->currentInput(), "Microphone");
    EXPECT_EQ(state->currentOutput(), "Speaker");
    EXPECT_TRUE(state->bridgeInstalled());
    EXPECT_EQ(state->status(), "Bridge ready (routed only while a call is active)");

    computer.audio.removeDevice("Microphone");
    computer.audio.removeDevice("VeltoLoop 2ch");
    state->refresh();
    state->refresh();
    loop.drain();
    EXPECT_EQ(state->inputDevices(), Notes{"VeltoVoice 2ch Mic"});
    EXPECT_EQ(state->currentInput(), "");
    EXPECT_FALSE(state->bridgeInstalled());
    EXPECT_EQ(state->status(), "Bridge devices not installed — Settings → Debug → Drivers");

    computer.audio.faults.deviceListFails = true;
    state->refresh();
    loop.drain();
    EXPECT_EQ(state->outputDevices(), Notes{});
    state->refresh();
    state.reset();
    loop.drain();
}

} // namespace
} // namespace velto::test
