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

TEST_F(ReadinessStateTest, DriversAreKnownByTheirNamesAndOnlyChangesSignal) {
    int signals = 0;
    const auto observed = state->observe([&] { ++signals; });
    look();
    EXPECT_TRUE(state->ready());
    look();
    EXPECT_EQ(signals, 3);
    for (const auto& [installed, ready] : {std::pair<Notes, bool>{{"VeltoVoice.driver"}, false},
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
    for (int time = 1; time <= 2; ++time) {
        computer.desktop.setTrusted(false, "accessibility is switched off");
        computer.microphone.set(MicrophoneAuthorization::denied, "the sound server refuses access");
        drivers = {"VeltoVoice.driver"};
        look();
        look();
        for (const auto* why :
             {"accessibility: accessibility is switched off\n",
              "microphone: the sound server refuses access\n", "audio driver: not installed: VeltoLoop\n"})
            EXPECT_EQ(timesLogged(std::string("] readiness: ") + why), time) << why;
        computer.desktop.setTrusted(true);
        computer.microphone.set(MicrophoneAuthorization::authorized);
        drivers.emplace_back("VeltoLoop.driver");
        look();
    }
}

TEST_F(ReadinessStateTest, AnAnswerAboutTheMicrophoneComesOnAnyThreadAndLate) {
    computer.microphone.set(MicrophoneAuthorization::notDetermined);
    state->requestMic();
    computer.microphone.answer(MicrophoneAuthorization::authorized);
    EXPECT_FALSE(state->micReady());
    loop.drain();
    EXPECT_TRUE(state->micReady());
    state->requestMic();
    state.reset();
    computer.microphone.answer(MicrophoneAuthorization::denied);
    loop.drain();
}

} // namespace
} // namespace velto::test
