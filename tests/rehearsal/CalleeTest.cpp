// The callee's talk on a hand-driven clock, and its ear and mouth on a sound server of its own.
#include "rehearsal/PrivateSoundServer.h"
#include "rehearsal/callee/CalleeTalk.h"
#include "rehearsal/callee/PhoneAudio.h"
#include "rehearsal/signal/LineVoice.h"

#include <boost/json.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace velto::rehearsal {
namespace {

using namespace std::chrono_literals;

struct CalleeTalkTest : testing::Test {
    Scenario scenario;
    std::optional<CalleeTalk> talk;
    CalleeTalk::Time now{};
    std::vector<std::string> did;

    void answer(std::vector<ScenarioLine> lines, CallEnd end) {
        scenario.lines = std::move(lines);
        scenario.end = end;
        scenario.patience = 5;
        talk.emplace(
            scenario,
            CalleeTalk::Hooks{[this](std::size_t line) { did.push_back("say " + std::to_string(line)); },
                              [this](const std::string& reason) { did.push_back(reason); },
                              [](const boost::json::object&) {}},
            now);
    }
    void hear(Samples samples, Milliseconds silence = 0ms) {
        appendSilence(samples, silence, 16000);
        for (std::size_t at = 0; at + 160 <= samples.size(); at += 160) {
            now += 10ms;
            talk->hear(std::span(samples).subspan(at, 160), now);
            talk->tick(now);
        }
    }
    void wait(Milliseconds time) { hear({}, time); }
    static Samples agent(int mark) { return speakLine(mark, "Words of the agent.", "en-us", 16000).samples; }
    std::vector<std::string> done() { return std::exchange(did, {}); }
};
using Did = std::vector<std::string>;

TEST_F(CalleeTalkTest, SpeaksFirstAnswersTheEndOfALineAndHangsUpAfterItsLast) {
    answer({{1, Side::callee, "a"}, {2, Side::agent, "b"}, {3, Side::callee, "c", 1.0}},
           CallEnd::calleeHangsUp);
    wait(190ms);
    EXPECT_EQ(done(), Did{});
    wait(20ms);
    EXPECT_EQ(done(), Did{"say 0"});
    wait(6000ms);
    EXPECT_EQ(done(), Did{}) << "no patience is lost while it talks itself";
    talk->said(now);
    wait(1000ms);
    hear(agent(9), 3000ms);
    EXPECT_EQ(done(), Did{}) << "not its cue";
    const auto line = agent(2);
    hear(Samples(line.begin(), line.end() - 8000), 2000ms);
    EXPECT_EQ(done(), Did{}) << "a line whose end was lost is no cue either";
    hear(line, 900ms);
    EXPECT_EQ(done(), Did{});
    wait(500ms);
    EXPECT_EQ(done(), Did{"say 2"}) << "a second after the last sound";
    talk->said(now);
    wait(250ms);
    EXPECT_EQ(done(), Did{});
    wait(1000ms);
    EXPECT_EQ(done(), Did{"callee hung up"}) << "once";
}

TEST_F(CalleeTalkTest, TalksOverALineAndLosesPatienceInSilence) {
    answer({{1, Side::agent, "a"}, {2, Side::callee, "b", 0.2, 0.5}, {3, Side::agent, "c"}},
           CallEnd::agentHangsUp);
    const auto line = agent(1);
    hear(Samples(line.begin(), line.begin() + 16 * 760), 400ms);
    EXPECT_EQ(done(), Did{});
    wait(500ms);
    EXPECT_EQ(done(), Did{"say 1"});
    talk->said(now);
    wait(4900ms);
    EXPECT_EQ(done(), Did{});
    wait(1000ms);
    EXPECT_EQ(done(), Did{"callee lost patience"});
}

/// What the ear brings, collected from its thread.
struct Listener {
    std::mutex mutex;
    std::vector<Mark> marks;
    MarkListener listener{PhoneAudio::earRate, [this](const Mark& mark) { marks.push_back(mark); }};

    bool waitFor(std::size_t count) {
        for (int i = 0; i < 1500; ++i) {
            {
                const std::lock_guard lock(mutex);
                if (marks.size() >= count)
                    return true;
            }
            std::this_thread::sleep_for(10ms);
        }
        return false;
    }
};

TEST(PhoneAudio, FollowsTheDefaultDevicesAndComesBackWithTheServer) {
    const auto folder = std::filesystem::temp_directory_path() / ("velto-ca-" + std::to_string(::getpid()));
    auto server = PrivateSoundServer::start(folder);
    ASSERT_TRUE(server) << server.error().description;
    for (const auto& [name, value] : (*server)->clientEnvironment())
        ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    const auto pactl = [](const std::string& command) {
        return std::system(("pactl " + command).c_str()); // NOLINT(concurrency-mt-unsafe)
    };
    {
        Listener ear;
        std::atomic<int> said{0};
        PhoneAudio phone({[&](Samples samples, PhoneAudio::Time) {
                              const std::lock_guard lock(ear.mutex);
                              ear.listener.feed(samples);
                          },
                          [&](PhoneAudio::Time) { ++said; }});
        const auto say = [&](int mark) {
            auto samples = speakLine(mark, "Hi", "en-us", PhoneAudio::mouthRate).samples;
            // Long enough for a stream that has to be made first.
            samples.insert(samples.begin(), PhoneAudio::mouthRate, 0);
            appendSilence(samples, 300ms, PhoneAudio::mouthRate);
            phone.say(samples);
        };
        // Mouth and ear meet in the loop device only when both defaults point there.
        say(1);
        for (int i = 0; i < 1500 && said == 0; ++i)
            std::this_thread::sleep_for(10ms);
        std::this_thread::sleep_for(200ms);
        ASSERT_EQ(pactl("set-default-sink veltoloop"), 0);
        ASSERT_EQ(pactl("set-default-source veltoloop_in"), 0);
        say(2);
        ASSERT_TRUE(ear.waitFor(2));
        ASSERT_TRUE((*server)->restart());
        ASSERT_EQ(pactl("set-default-sink veltoloop"), 0);
        ASSERT_EQ(pactl("set-default-source veltoloop_in"), 0);
        say(3);
        EXPECT_TRUE(ear.waitFor(4));
        const std::lock_guard lock(ear.mutex);
        EXPECT_EQ(ear.marks, (std::vector<Mark>{{2, Mark::Place::begin},
                                                {2, Mark::Place::end},
                                                {3, Mark::Place::begin},
                                                {3, Mark::Place::end}}));
        EXPECT_GT(phone.measures().framesHeard, 16000U);
        EXPECT_GT(phone.measures().peakHeard, 3000);
    }
    server->reset();
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace velto::rehearsal
