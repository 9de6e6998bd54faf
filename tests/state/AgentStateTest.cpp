#include "VeltoApp/state/AgentState.h"

#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"
#include "tests/state/StateFixture.h"

namespace velto::test {
namespace {

struct AgentStateTest : StateTest {
    /// A provider that takes three seconds, or for ever, and accepts any key that begins with "good".
    asio::awaitable<bool> ask(VoiceProvider provider, std::string key) {
        asked.push_back(std::string(rawValue(provider)) + " \"" + key + "\"");
        co_await Clock::shared().sleep(key == "silence" ? 24h : 3s);
        co_return key.starts_with("good");
    }
    static void keep(const char* gemini, const char* openai) {
        KeychainStore::set(gemini, SecretKey::geminiAPIKey);
        KeychainStore::set(openai, SecretKey::openAIAPIKey);
    }
    void make() {
        state = AgentState::make(settings, [this](VoiceProvider provider, std::string key) {
            return ask(provider, std::move(key));
        });
    }

    Notes asked;
    AppSettings settings{computer.preferences};
    std::shared_ptr<AgentState> state;
};

TEST_F(AgentStateTest, AsksOneProviderAfterTheOtherAndPublishesInOneStep) {
    keep(" \tgood ", "bad");
    make();
    EXPECT_TRUE(state->validating());
    std::set<long> changes; // s
    const auto observed =
        state->observe([&] { changes.insert(loop.clock.steadyNow().time_since_epoch() / 1s); });
    loop.advance(60s);
    EXPECT_EQ(asked, (Notes{"gemini \"good\"", "openai \"bad\""}));
    EXPECT_EQ(changes, std::set{6L});
    EXPECT_TRUE(state->hasGeminiKey() && state->hasOpenAIKey() && state->apiKeyConfigured());
    EXPECT_TRUE(state->geminiValid() && !state->openaiValid() && !state->validating());
    EXPECT_TRUE(state->anyKeyValid());
    EXPECT_EQ(logged(), "[2026-11-16T20:23:26Z] keys: gemini=present/true openai=present/false\n"
                        "[2026-11-16T20:23:26Z] keys: kept in simulated keyring\n");
}

TEST_F(AgentStateTest, PresenceDecidesWhichProviderACallUses) {
    settings.provider.set("openai");
    keep(" \t", " ");
    make();
    loop.drain();
    EXPECT_EQ(asked, Notes{});
    EXPECT_NE(logged().find("] keys: gemini=none/false openai=none/false\n"), std::string::npos);
    EXPECT_EQ(state->activeProvider(), std::nullopt);
    keep("bad", "");
    state->refreshKey();
    loop.advance(60s);
    EXPECT_EQ(state->activeProvider(), VoiceProvider::gemini);
    keep("good", "bad");
    state->refreshKey();
    loop.advance(60s);
    EXPECT_EQ(state->activeProvider(), VoiceProvider::openai);
}

TEST_F(AgentStateTest, RefreshesMayOverlapAndOutliveTheState) {
    keep("silence", "good");
    make();
    loop.advance(1h);
    EXPECT_TRUE(state->validating());
    EXPECT_FALSE(state->hasGeminiKey()) << "nothing is published in part";
    keep("", "good");
    state->refreshKey();
    loop.advance(1s);
    keep("good too", "bad");
    state->refreshKey();
    loop.advance(2s);
    EXPECT_TRUE(state->openaiValid() && !state->validating());
    loop.advance(4s);
    EXPECT_TRUE(state->geminiValid() && !state->openaiValid());

    const auto before = logged();
    asked.clear();
    state->refreshKey();
    loop.advance(1s);
    state.reset();
    loop.advance(60s);
    EXPECT_EQ(asked.size(), 1u); // the second key is not sent for nobody
    EXPECT_EQ(logged(), before);
}

} // namespace
} // namespace velto::test
