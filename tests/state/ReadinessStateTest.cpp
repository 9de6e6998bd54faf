#include "VeltoApp/state/ReadinessState.h"

#include "tests/state/StateFixture.h"

namespace velto::test {
namespace {

struct ReadinessStateTest : StateTest {
    Notes drivers{"VeltoHQ.driver", "VeltoLoop.driver", "VeltoVoice.driver"};
    std::shared_ptr<ReadinessState> state = std::make_shared<ReadinessState>([this] { return drivers; });

    void look() {
        state->refresh();
        loop.drain();
    }
};

TEST_F(ReadinessStateTest, EachCheckGoesItsOwnWayAndSignalsOnlyChanges) {
    int signals = 0;
    const auto observed = state->observe([&] { ++signals; });
    look();
    EXPECT_TRUE(state->ready());
    EXPECT_EQ(signals, 3);
    look();
    EXPECT_EQ(signals, 3);

    using enum MicrophoneAuthorization;
    for (const auto other : {notDetermined, restricted, denied}) {
        computer.microphone.set(other);
        look();
        EXPECT_FALSE(state->micReady());
    }
    computer.microphone.set(authorized);
    computer.desktop.setTrusted(false);
    look();
    EXPECT_TRUE(state->micReady());
    EXPECT_FALSE(state->axReady());
    EXPECT_FALSE(state->ready());
    computer.desktop.setTrusted(true);
    for (const auto& [installed, ready] : {std::pair<Notes, bool>{{"VeltoVoice.driver"}, false},
                                           {{"VeltoLoop.driver"}, false},
                                           {{"xVeltoLoop.driver", "veltovoice.driver"}, false},
                                           {{"VeltoVoice2.driver", "VeltoLoopOld"}, true}}) {
        drivers = installed;
        look();
        EXPECT_EQ(state->driverReady(), ready) << installed.front();
    }
    EXPECT_TRUE(state->ready());
}

TEST_F(ReadinessStateTest, TheLogSaysOnceWhatIsMissingAndWhy) {
    look();
    EXPECT_EQ(logged(), "");
    computer.desktop.setTrusted(false, "accessibility is switched off");
    computer.microphone.set(MicrophoneAuthorization::denied, "the sound server refuses access");
    drivers = {"VeltoVoice.driver"};
    look();
    look();
    EXPECT_EQ(logged(), "[2026-11-16T20:23:20Z] readiness: accessibility: accessibility is switched off\n"
                        "[2026-11-16T20:23:20Z] readiness: microphone: the sound server refuses access\n"
                        "[2026-11-16T20:23:20Z] readiness: audio driver: not installed: VeltoLoop\n");
    computer.desktop.setTrusted(true);
    look();
    computer.desktop.setTrusted(false, "accessibility is switched off");
    drivers = {};
    look();
    EXPECT_EQ(timesLogged("accessibility: accessibility is switched off"), 2);
    EXPECT_EQ(timesLogged("not installed: VeltoLoop and VeltoVoice"), 1);
}

TEST_F(ReadinessStateTest, InstalledDriversThatTheSoundServerDoesNotShowAreReadyAndSaidToBeAmiss) {
    computer.audio.removeDevice("VeltoLoop 2ch");
    look();
    look();
    EXPECT_TRUE(state->driverReady());
    EXPECT_EQ(timesLogged("audio driver: installed, but the sound server does not show the devices"), 1);
    computer.audio.addDevice("VeltoLoop 2ch", 2, 2);
    look();
    computer.audio.removeDevice("VeltoLoop 2ch");
    look();
    EXPECT_EQ(timesLogged("does not show the devices"), 2);
}

TEST_F(ReadinessStateTest, TheMicrophoneIsLookedAtWhenItsUserHasAnswered) {
    computer.microphone.set(MicrophoneAuthorization::notDetermined);
    state->requestMic();
    loop.drain();
    EXPECT_FALSE(state->micReady());
    computer.microphone.answer(MicrophoneAuthorization::authorized);
    EXPECT_FALSE(state->micReady()) << "the answer may come on any thread";
    loop.drain();
    EXPECT_TRUE(state->micReady());
    state->requestMic();
    state.reset();
    computer.microphone.answer(MicrophoneAuthorization::denied);
    loop.drain();
}

} // namespace
} // namespace velto::test
