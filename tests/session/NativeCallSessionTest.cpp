#include "VeltoApp/session/NativeCallSession.h"

#include "VeltoShared/audio/AudioRouting.h"
#include "VeltoShared/audio/Wav.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"
#include "VeltoShared/telephony/AX.h"
#include "tests/session/SessionFakes.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using State = NativeCallSession::State;
using Reason = NativeCallSession::Failure::Reason;

struct Session : ::testing::Test {
    Session() {
        KeychainStore::set(" key\t", SecretKey::geminiAPIKey);
        computer.audio.addUsualDevices();
        computer.desktop.launch(std::string(AX::kPhoneApp), 41);
        computer.audio.setProcess(41, 61, true);
    }
    /// What still waits would be left in a circle of its waits.
    ~Session() override {
        if (session)
            session->stop();
        loop.advance(60s);
    }

    long timesLogged(const std::string& line) const { return std::ranges::count(session->log(), line); }
    bool logged(const std::string& line) const { return timesLogged(line) > 0; }
    long noted(const std::string& note) const { return std::ranges::count(notes, note); }
    static std::string defaults() {
        return AudioRouting::defaultInputName() + " / " + AudioRouting::defaultOutputName();
    }
    /// Dials, connects and answers.
    void goLive() {
        session->number.set("5551234");
        session->start("Book a table", true);
        line.answered = true;
        loop.advance(2s);
        ASSERT_EQ(session->state(), State::live);
    }
    /// Waits for a call that the user places; answers what its agent was made of.
    CallAgentOptions startWaiting() {
        session->start("goal", false);
        loop.drain();
        return agents.made.back();
    }
    void say(std::initializer_list<const char*> lines) {
        for (const char* text : lines)
            agents.latest->log(text);
        loop.drain();
    }

    TestComputer computer;
    Loop loop;
    Notes notes;
    FakeLine line{notes};
    FakeAudio audio{notes};
    FakeAgents agents{notes};
    FakeArchive archive{notes};
    AppSettings settings{computer.preferences};
    std::shared_ptr<NativeCallSession> session =
        std::make_shared<NativeCallSession>(SessionCollaborators{&line, &audio, &agents, &archive}, settings);
};

TEST_F(Session, placesACallFromWarmUpToTheRecord) {
    session->number.set("5551234");
    std::vector<std::string> states;
    auto watch = session->state.observe([&](State next) { states.emplace_back(rawValue(next)); });
    session->start("Book a table", true);
    EXPECT_TRUE(session->running());
    EXPECT_EQ(session->state(), State::idle); // the flow sets it, not the start
    loop.advance(1100ms);
    EXPECT_TRUE(logged("dialled 5551234"));
    line.answered = true;
    loop.advance(550ms); // seen answered at 1.3 s
    EXPECT_EQ(noted("greet"), 0);
    loop.advance(50ms);
    EXPECT_EQ(noted("greet"), 1);
    EXPECT_EQ(defaults(), "VeltoVoice 2ch Mic / VeltoLoop 2ch");

    say({"agent: Hello", "agent:  there. ", "turn complete", "caller: A table", "caller:  please",
         "agent: Sure", "stats: downlink frames=5 peak=6", "caller:  ", "turn complete"});
    EXPECT_EQ(session->audioStats(), "downlink frames=5 peak=6");
    const std::vector<std::string> transcript{"Agent: Hello there.", "Caller: A table please", "Agent: Sure"};
    EXPECT_EQ(session->transcriptLines(), transcript);
    say({"caller: By"});
    EXPECT_EQ(session->liveTranscript().back(), "Caller: By");
    EXPECT_EQ(session->transcriptLines(), transcript);

    EXPECT_EQ(agents.latest->onToolCall("end_call", R"({"reason":"done"})"), R"({"status":"hanging_up"})");
    EXPECT_EQ(agents.latest->onToolCall("other", "{}"), R"({"status":"unsupported"})");
    loop.advance(2499ms);
    EXPECT_EQ(noted("hangup"), 0);
    loop.advance(1ms);
    EXPECT_TRUE(logged("agent requested hangup {\"reason\":\"done\"}") && logged("hung up"));
    EXPECT_TRUE(session->running());
    loop.advance(500ms);
    EXPECT_FALSE(session->running());
    EXPECT_TRUE(logged("call ended"));
    EXPECT_EQ(states, (std::vector<std::string>{"dialing", "warming", "live", "ended"}));

    ASSERT_EQ(archive.records.size(), 1u);
    EXPECT_EQ(archive.records[0].number, "5551234");
    EXPECT_EQ(archive.records[0].transcript,
              "Agent: Hello there.\nCaller: A table please\nAgent: Sure\nCaller: By");
    EXPECT_NEAR(archive.records[0].duration, 5.0, 0.7);
    EXPECT_EQ(notes,
              (Notes{"agent start", "dial 5551234", "greet", "hangup", "agent stop", "saved", "restore"}));
    EXPECT_TRUE(logged("audio: restored your default devices"));
    EXPECT_EQ(defaults(), "Microphone / Speaker");
    EXPECT_NE(readFile(AppPaths::logFile()).find("] session: dialled 5551234\n"), std::string::npos);
    EXPECT_EQ(loop.clock.waiting(), 0u);
}

TEST_F(Session, theAgentIsMadeFromTheSettings) {
    settings.monitorAgent.set(true);
    settings.monitorDevice.set("Headphones");
    settings.geminiVoice.set("Kore");
    EXPECT_EQ(startWaiting(), (CallAgentOptions{VoiceProvider::gemini, "key", "goal", "Kore", "VeltoLoop 2ch",
                                                "VeltoVoice 2ch Feed", "Headphones", 24000}));
    EXPECT_TRUE(logged("provider: Gemini Live · voice Kore"));
    EXPECT_EQ(session->state(), State::warming);
    session->start("again", true); // running: no effect
    EXPECT_EQ(session->sessionNumber(), 1);
    EXPECT_EQ(timesLogged("session 1 starting"), 1);
}

TEST_F(Session, picksTheProviderWhoseKeyIsThere) {
    settings.provider.set("openai");
    KeychainStore::set("  \t", SecretKey::openAIAPIKey);
    EXPECT_EQ(startWaiting().provider, VoiceProvider::gemini);
    session->stop();
    KeychainStore::set("sk", SecretKey::openAIAPIKey);
    EXPECT_EQ(startWaiting().provider, VoiceProvider::openai);
    EXPECT_TRUE(logged("provider: OpenAI Realtime · voice alloy"));
}

TEST_F(Session, refusesWithoutKeyOrTrust) {
    line.isTrusted = false;
    session->start("", true);
    EXPECT_TRUE(logged("Accessibility not granted"));
    EXPECT_EQ(session->failure().reason, Reason::notTrusted);
    KeychainStore::remove(SecretKey::geminiAPIKey);
    session->start("", true);
    EXPECT_TRUE(logged("no API key"));
    EXPECT_EQ(session->failure().reason, Reason::noKey);
    EXPECT_EQ(session->state(), State::error);
    EXPECT_FALSE(session->running());
    EXPECT_EQ(session->sessionNumber(), 0);
    EXPECT_TRUE(notes.empty() && archive.records.empty());
}

TEST_F(Session, routesTheDownlink) {
    settings.routeSystemAudio.set(false);
    EXPECT_EQ(startWaiting().inputDevice, "VeltoLoop 2ch");
    EXPECT_TRUE(logged("downlink: 'VeltoLoop 2ch' (system routing not switched)"));
    session->stop();

    settings.useProcessTap.set(true);
    settings.muteCallLocally.set(true);
    EXPECT_EQ(startWaiting().inputDevice, "VeltoTap");
    EXPECT_TRUE(logged("downlink: process tap on Phone.app ('VeltoTap')"));
    EXPECT_EQ(computer.audio.taps.taps().begin()->second.mute, TapMute::mutedWhenTapped);
    session->stop();
    EXPECT_TRUE(computer.audio.taps.taps().empty());
    EXPECT_TRUE(computer.audio.defaultChanges().empty());

    settings.routeSystemAudio.set(true);
    settings.restoreDevices.set(false);
    startWaiting();
    EXPECT_TRUE(logged("audio: Uplink routing (input only) · in='VeltoVoice 2ch Mic' (output untouched)"));
    session->stop();
    EXPECT_EQ(defaults(), "VeltoVoice 2ch Mic / Speaker");

    settings.restoreDevices.set(true);
    computer.audio.taps.faults.noPermission = true;
    computer.audio.removeDevice("VeltoLoop 2ch");
    EXPECT_EQ(startWaiting().inputDevice, "VeltoLoop 2ch");
    EXPECT_TRUE(
        logged("downlink: tap unavailable — grant “Screen & System Audio Recording”, quit & reopen Velto"));
    EXPECT_TRUE(logged("audio: Bridge devices not installed — install in Settings → Debug → Drivers · "
                       "in='VeltoVoice 2ch Mic' out='Speaker'"));
    session->stop();
    EXPECT_EQ(defaults(), "Microphone / Speaker") << "as before the first switch";
}

TEST_F(Session, waitsNinetySecondsForTheLine) {
    session->start("", false);
    loop.advance(200ms + 300 * 300ms);
    EXPECT_TRUE(session->running());
    loop.advance(300ms);
    EXPECT_TRUE(logged("no call connected; stopping"));
    EXPECT_EQ(session->failure().reason, Reason::neverConnected);
    EXPECT_EQ(session->state(), State::ended);
    EXPECT_EQ(archive.records.size(), 1u);
}

TEST_F(Session, greetsAfterFifteenSecondsWithoutAnAnswer) {
    line.active = true;
    session->start("", false);
    loop.advance(200ms + 50 * 300ms);
    EXPECT_EQ(timesLogged("waiting for answer… phone shows: Mobile | Calling…"), 5);
    EXPECT_EQ(session->state(), State::warming);
    loop.advance(300ms);
    EXPECT_TRUE(logged("answer not detected; greeting anyway") && logged("call answered — greeting"));
    EXPECT_EQ(session->state(), State::live);
    loop.advance(400ms);
    EXPECT_EQ(notes.back(), "greet");
    line.active = false; // it was up when the session started
    loop.advance(500ms);
    EXPECT_TRUE(logged("call ended"));
}

TEST_F(Session, aFailedDialEndsWhenTheAgentIsDone) {
    session->number.set("a b");
    line.dialSucceeds = false;
    session->start("", true);
    loop.advance(1s);
    EXPECT_EQ(session->failure().reason, Reason::invalidNumber);
    archive.records.clear();
    agents.startTime = 5s;
    session->number.set("1");
    session->start("", true);
    loop.advance(4900ms);
    EXPECT_TRUE(logged("dial failed (no line)") && session->running());
    EXPECT_EQ(session->failure().reason, Reason::notDialed);
    loop.advance(200ms);
    EXPECT_EQ(session->state(), State::ended);
    ASSERT_EQ(archive.records.size(), 1u);
    EXPECT_EQ(archive.records[0].transcript, "");
    EXPECT_NEAR(archive.records[0].duration, 5, 0.3);
}

TEST_F(Session, anAgentThatFailsLeavesTheCallUp) {
    agents.failure = "no route to host";
    session->number.set("1");
    session->start("", true);
    loop.advance(500ms);
    EXPECT_TRUE(logged("agent error: no route to host"));
    const NativeCallSession::Failure first{Reason::agent, "no route to host"};
    EXPECT_EQ(session->failure(), first);
    EXPECT_EQ(session->state(), State::error);
    EXPECT_TRUE(session->running());
    loop.advance(600ms);
    EXPECT_EQ(session->state(), State::warming);
    loop.advance(100s);
    EXPECT_EQ(session->failure(), first);
}

TEST_F(Session, stopEndsAtOnceAndOnlyOnce) {
    line.active = true;
    session->start("", false);
    loop.advance(3s);
    session->stop();
    EXPECT_EQ(session->state(), State::ended);
    session->stop();
    const auto lines = session->log().size();
    loop.advance(120s);
    EXPECT_EQ(archive.records.size(), 1u);
    EXPECT_EQ(session->log().size(), lines + 1); // the agent's final statistics
    EXPECT_EQ(noted("agent stop"), 1);
}

TEST_F(Session, whatComesLateFromAnEarlierCallDoesNothing) {
    goLive();
    const auto earlier = agents.latest;
    earlier->onToolCall("end_call", "{}");
    loop.drain();
    session->stop();
    line.active = false;
    goLive();
    earlier->log("caller: from the past");
    earlier->onToolCall("end_call", "{}");
    loop.advance(10s);
    EXPECT_EQ(noted("hangup"), 0);
    EXPECT_TRUE(session->liveTranscript().empty());
    session->finish(1);
    EXPECT_TRUE(session->running());

    auto weak = std::weak_ptr(session);
    session.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(agents.latest->onToolCall("end_call", "{}"), R"({"status":"error"})");
    agents.latest->log("into nothing");
    loop.advance(10s);
}

TEST_F(Session, aHangUpThatFailsIsSaidAndTheCallGoesOn) {
    goLive();
    line.hangupSucceeds = false;
    agents.latest->onToolCall("end_call", "{}");
    agents.latest->onToolCall("end_call", "{}");
    loop.advance(3s);
    EXPECT_EQ(timesLogged("hangup did not complete"), 2);
    EXPECT_EQ(session->state(), State::live);
}

TEST_F(Session, recordsWhenAsked) {
    const std::vector<std::int16_t> stereo(14, 5);
    settings.recordCalls.set(true);
    goLive();
    computer.audio.deliver("VeltoLoop 2ch", stereo);
    session->stop();
    const std::filesystem::path file = archive.records.at(0).recordingPath.value();
    EXPECT_TRUE(file.filename().string().starts_with("call-2026111"));
    EXPECT_EQ(file.parent_path(), AppPaths::recordings());
    EXPECT_TRUE(logged("recording → " + file.filename().string()));
    const auto sound = Wav::readMono16(file);
    ASSERT_TRUE(sound);
    EXPECT_EQ(sound->rate, 16'000);
    EXPECT_EQ(sound->samples, std::vector<std::int16_t>(7, 5));

    line.active = false;
    goLive();
    computer.audio.deliver("VeltoLoop 2ch", stereo);
    std::filesystem::remove_all(AppPaths::recordings());
    session->stop();
    EXPECT_TRUE(logged("recording: 7 samples could not be written: the file was deleted"));

    line.active = false;
    computer.audio.removeDevice("VeltoLoop 2ch");
    goLive();
    EXPECT_TRUE(logged("recording unavailable (capture device missing)"));
    session->stop();
    EXPECT_EQ(archive.records.at(0).recordingPath, std::nullopt);
}

TEST_F(Session, aSoundServerThatReturnsIsRoutedAgain) {
    goLive();
    computer.audio.removeDevice("VeltoLoop 2ch");
    computer.audio.serverReturns();
    loop.advance(500ms);
    computer.audio.addDevice("VeltoLoop 2ch", 2, 2);
    loop.advance(200ms);
    EXPECT_EQ(timesLogged("audio: Bridge routing OK · in='VeltoVoice 2ch Mic' out='VeltoLoop 2ch'"), 2);
    EXPECT_TRUE(session->running());
    session->stop();
    const auto changes = computer.audio.defaultChanges().size();
    computer.audio.serverReturns();
    loop.advance(5s);
    EXPECT_EQ(computer.audio.defaultChanges().size(), changes) << "no longer ours to route";
}

TEST_F(Session, keepsTheNewestFourHundredLines) {
    goLive();
    for (int i = 0; i < 450; ++i)
        agents.latest->log("line " + std::to_string(i));
    loop.drain();
    EXPECT_EQ(session->log().size(), 400u);
    EXPECT_EQ(session->log().back(), "line 449");
}

} // namespace
} // namespace velto::test
