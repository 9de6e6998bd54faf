#include "VeltoShared/agent/NativeAgent.h"

#include "tests/support/AllocationCounter.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using Samples = std::vector<std::int16_t>;

/// A voice session that a test plays: it notes what it is asked, and the test pushes events.
struct FakeVoice : VoiceSession {
    VoiceEvents& events() override { return sequence; }
    asio::awaitable<Result<>> connect() override {
        notes.push_back("connect");
        co_await Clock::shared().sleep(connectTime);
        if (!failure.empty())
            co_return Failure{kErrorTransport, failure};
        co_return Result<>{};
    }
    asio::awaitable<void> sendAudio(std::span<const std::byte> pcm) override {
        Samples chunk(pcm.size() / 2);
        std::memcpy(chunk.data(), pcm.data(), pcm.size());
        audio.push_back(std::move(chunk));
        co_await Clock::shared().sleep(sendTime);
    }
    asio::awaitable<void> sendClientText(std::string text) override {
        notes.push_back("text " + text);
        co_return;
    }
    asio::awaitable<void> sendToolResponse(std::string id, std::string name,
                                           std::string resultJSON) override {
        notes.push_back("tool " + id + " " + name + " " + resultJSON);
        co_return;
    }
    asio::awaitable<void> close() override {
        notes.push_back("close");
        sequence.push(event::Closed{"client closed"});
        sequence.finish();
        co_return;
    }

    VoiceEvents sequence{kVoiceEventCapacity};
    std::vector<std::string> notes;
    std::vector<Samples> audio;
    std::string failure;
    Clock::Duration connectTime{};
    Clock::Duration sendTime{};
};

event::Audio speech(const Samples& samples, std::size_t bytes) {
    AudioChunk chunk(bytes);
    std::memcpy(chunk.bytes().data(), samples.data(), bytes);
    return {std::move(chunk)};
}

struct Agent : ::testing::Test {
    Agent() {
        computer.audio.addUsualDevices();
        options.goal = "goal";
        options.inputDevice = "VeltoLoop 2ch";
        options.outputDevice = "VeltoVoice 2ch Feed";
    }

    /// A running agent and its loops hold each other.
    ~Agent() override {
        if (agent)
            agent->stop();
        loop.drain();
    }

    void make() {
        agent = std::make_shared<NativeAgent>(options, voice);
        agent->setLog([this](std::string line) { lines.push_back(std::move(line)); });
    }
    Result<> start() {
        make();
        return loop.run(agent->start());
    }
    void push(VoiceEvent event) {
        voice->sequence.push(std::move(event));
        loop.drain();
    }
    /// A stereo chunk at the capture device whose mono mean is `sample`.
    void hear(std::int16_t sample, std::size_t frames = 160) {
        computer.audio.deliver("VeltoLoop 2ch", Samples(frames * 2, sample));
        loop.drain();
    }
    long count(const std::string& note) const { return std::ranges::count(voice->notes, note); }

    TestComputer computer;
    Loop loop;
    NativeAgent::Options options;
    std::shared_ptr<FakeVoice> voice = std::make_shared<FakeVoice>();
    std::shared_ptr<NativeAgent> agent;
    std::vector<std::string> lines;
};

TEST_F(Agent, carriesTheCalleeToTheModelAndTheModelIntoTheCall) {
    options.monitorDevice = "Speaker";
    ASSERT_TRUE(start().has_value());
    EXPECT_EQ(lines, std::vector<std::string>{"monitoring agent voice on 'Speaker'"});
    hear(1000);
    ASSERT_EQ(voice->audio.size(), 1u);
    EXPECT_EQ(voice->audio[0].size(), 160u);
    EXPECT_EQ(voice->audio[0][0],
              static_cast<std::int16_t>(1000 * (0.6 * 32 + 0.4 * 0.15 / (1000 / 32768.0))));

    push(speech({100, -200, 300}, 5)); // an odd byte belongs to no sample
    push(speech({7}, 1));
    EXPECT_EQ(computer.audio.pull("VeltoVoice 2ch Feed", 3), (Samples{100, 100, -200, -200, 0, 0}));
    loop.advance(3s);
    EXPECT_EQ(lines.back(),
              "stats: downlink frames=160 peak=1000 | uplink samples=2 peak=200 | play rendered=3 "
              "underrun=1 | agc=21.2");

    push(speech({1, 2}, 4));
    push(event::Interrupted{});
    push(speech({9}, 2));
    EXPECT_EQ(computer.audio.pull("VeltoVoice 2ch Feed", 2), (Samples{9, 9, 0, 0}));
    EXPECT_EQ(computer.audio.pull("Speaker", 5), (Samples{100, 100, -200, -200, 1, 1, 2, 2, 9, 9}))
        << "the monitor keeps its queue";
    EXPECT_EQ(lines.back(), "interrupted");
    agent->stop();
    EXPECT_EQ(lines.back().substr(0, 12), "final stats:");
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
    loop.drain();
    EXPECT_EQ(count("close"), 1);
    EXPECT_EQ(loop.clock.waiting(), 0u);
}

TEST_F(Agent, theGreetingIsSentOnceWhenBothWantIt) {
    for (const bool isAnsweredFirst : {true, false}) {
        voice = std::make_shared<FakeVoice>();
        ASSERT_TRUE(start().has_value());
        const auto greetingsAfter = [&](bool isAnswer) {
            isAnswer ? agent->greet() : push(event::SetupComplete{});
            loop.drain();
            return count("text Call goal: goal. Start with a brief greeting.");
        };
        EXPECT_EQ(greetingsAfter(isAnsweredFirst), 0);
        EXPECT_EQ(greetingsAfter(!isAnsweredFirst), 1);
        EXPECT_EQ(greetingsAfter(true), 1);
        EXPECT_EQ(greetingsAfter(false), 1);
        agent->stop();
    }
    EXPECT_EQ(std::ranges::count(lines, "setup complete"), 4);
}

TEST_F(Agent, relaysWhatTheModelSaysAndAsks) {
    ASSERT_TRUE(start().has_value());
    push(event::CallerText{" hi"});
    push(event::AgentText{"hello"});
    push(event::TurnComplete{});
    push(ToolCall{"7", "end_call", "{}"});
    EXPECT_EQ(count(R"(tool 7 end_call {"status":"unsupported"})"), 1);
    agent->setOnToolCall([](const std::string& name, const std::string& json) { return name + json; });
    push(ToolCall{"8", "x", R"({"a":1})"});
    EXPECT_EQ(count(R"(tool 8 x x{"a":1})"), 1);
    push(event::Closed{"goAway"});
    push(event::CallerText{"unheard"});
    EXPECT_EQ(lines, (std::vector<std::string>{"caller:  hi", "agent: hello", "turn complete",
                                               "tool call: end_call {}", R"(tool call: x {"a":1})",
                                               "closed: goAway"}));
    hear(1000); // the feed goes on until the agent is stopped
    EXPECT_EQ(voice->audio.size(), 1u);
}

TEST_F(Agent, missingDevices) {
    options.outputDevice = "Nowhere";
    options.monitorDevice = "Headphones";
    ASSERT_TRUE(start().has_value());
    EXPECT_EQ(lines, (std::vector<std::string>{"uplink device not found: Nowhere — agent voice goes nowhere",
                                               "monitor device not found: Headphones"}));
    push(speech({1}, 2));
    loop.advance(3s);
    EXPECT_EQ(lines.back().find("play rendered"), std::string::npos);
    agent->stop();

    lines.clear();
    options.outputDevice = "VeltoVoice 2ch Feed";
    options.monitorDevice = "";
    options.inputDevice = "Gone";
    const auto failed = start();
    ASSERT_TRUE(failed.has_error());
    EXPECT_EQ(failed.error().code, kErrorBadURL);
    EXPECT_EQ(lines, std::vector<std::string>{"capture device not found: Gone"});
    EXPECT_EQ(computer.audio.runningUnits(), 1u); // the uplink stays until stop
    agent->stop();
    agent->stop();
    EXPECT_EQ(computer.audio.runningUnits(), 0u);

    lines.clear();
    voice->failure = "certificate of another host";
    const auto unconnected = start();
    EXPECT_EQ(unconnected.error().description, "certificate of another host");
    EXPECT_TRUE(lines.empty());
}

TEST_F(Agent, aStopWhileItConnectsLeavesNothingRunning) {
    voice->connectTime = 1s;
    make();
    bool failed = false;
    asio::co_spawn(loop.context, agent->start(),
                   [&](std::exception_ptr, Result<> r) { failed = r.has_error(); });
    loop.advance(500ms);
    agent->stop();
    loop.advance(1s);
    EXPECT_TRUE(failed);
    EXPECT_EQ(computer.audio.runningUnits(), 0u);
    EXPECT_EQ(lines.size(), 1u); // the final statistics, and no word of any device
    const auto weak = std::weak_ptr(agent);
    agent.reset();
    loop.drain();
    EXPECT_TRUE(weak.expired());
}

TEST_F(Agent, aSlowConnectionDropsTheOldestChunks) {
    voice->sendTime = 10s;
    ASSERT_TRUE(start().has_value());
    for (std::int16_t i = 0; i < 60; ++i)
        hear(static_cast<std::int16_t>(1000 + i), 1);
    voice->sendTime = {};
    loop.advance(20s);
    ASSERT_EQ(voice->audio.size(), 51u); // the one under way and the newest fifty
    Agc agc;
    Samples oldest{1000};
    Samples next{1010};
    process(oldest, agc);
    process(next, agc);
    EXPECT_EQ(voice->audio[1], next);
    EXPECT_NE(lines.back().find("downlink frames=51 peak=1059"), std::string::npos);
}

TEST_F(Agent, feedingAllocatesNothingOnceWarm) {
    ChunkQueue queue(loop.context.get_executor());
    const auto feed = [](ChunkQueue& chunks) -> asio::awaitable<std::size_t> {
        const Samples captured(160, 1200);
        Samples chunk;
        Agc agc;
        std::size_t before = 0;
        for (int i = 0; i < 1100; ++i) {
            if (i == 100)
                before = allocationCount();
            chunks.push(captured);
            co_await chunks.next(chunk);
            process(chunk, agc);
        }
        co_return allocationCount() - before;
    };
    EXPECT_EQ(loop.run(feed(queue)), 0u);
}

TEST(Gain, followsTheLevelAndClips) {
    Agc agc;
    for (const double expected : {19.6, 12.16, 7.696, 5.0176}) {
        Samples loudest{32767, -32768};
        process(loudest, agc);
        EXPECT_NEAR(agc.gain, expected, 1e-9);
        EXPECT_EQ(loudest, (Samples{32767, -32768}));
    }

    agc.gain = 1;
    Samples quiet(100, 33); // 0.001 of full scale
    process(quiet, agc);
    EXPECT_EQ(agc.gain, 1.0);
    Samples audible(100, 53); // 0.0016: wants 93, gets at most 80
    process(audible, agc);
    EXPECT_NEAR(agc.gain, 0.6 + 0.4 * 80, 1e-9);

    agc.gain = 2.9; // truncation toward zero, below the noise floor
    Samples ones{1, -1};
    process(ones, agc);
    EXPECT_EQ(ones, (Samples{2, -2}));
}

} // namespace
} // namespace velto::test
