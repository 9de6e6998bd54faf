// What tests that talk to a real server on this computer stand on: threads, providers and their words.
#pragma once

#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/voice/GeminiLiveClient.h"
#include "VeltoShared/voice/OpenAIRealtimeClient.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ScriptedTlsServer.h"
#include "tests/support/TrustedAuthority.h"
#include "tests/voice/EventText.h"

#include <gtest/gtest.h>

#include <boost/asio/use_future.hpp>

#include <future>

namespace velto::test {

/// Messages of a provider's server that stand for one event each.
struct ServerWords {
    std::string setupComplete;
    std::string turnComplete;
    /// Before and after a text without characters to escape.
    std::pair<std::string, std::string> callerText, audio;

    static const ServerWords& of(VoiceProvider provider) {
        static const ServerWords kGemini{
            R"({"setupComplete":{}})",
            R"({"serverContent":{"turnComplete":true}})",
            {R"({"serverContent":{"inputTranscription":{"text":")", R"("}}})"},
            {R"({"serverContent":{"modelTurn":{"parts":[{"inlineData":{"data":")", R"("}}]}}})"}};
        static const ServerWords kOpenAI{
            R"({"type":"session.created"})",
            R"({"type":"response.done"})",
            {R"({"type":"conversation.item.input_audio_transcription.completed","transcript":")", R"("})"},
            {R"({"type":"response.audio.delta","delta":")", R"("})"}};
        return provider == VoiceProvider::gemini ? kGemini : kOpenAI;
    }
    static std::string around(const std::pair<std::string, std::string>& ends, std::string_view text) {
        return ends.first + std::string(text) + ends.second;
    }
};

constexpr std::string_view kSecret = "secret \"key\"/&";

inline std::shared_ptr<VoiceClient> makeClient(VoiceProvider provider, const std::string& host,
                                               VoiceSocket::Limits limits = {}) {
    const SessionOptions options{std::string(kSecret), "a model", "Puck", "Be brief.", host};
    if (provider == VoiceProvider::gemini)
        return std::make_shared<GeminiLiveClient>(options, limits);
    return std::make_shared<OpenAIRealtimeClient>(options, limits);
}

/// A server's script: takes what comes until the client closes.
inline void listenToTheEnd(ServerPeer& peer) {
    peer.accept();
    peer.readUntilClosed();
}

class VoiceFixture : public ::testing::Test {
  protected:
    /// Runs a coroutine on the background thread. Far more time than any limit of the transport.
    template <class T>
    static T run(asio::awaitable<T> task) {
        auto future = asio::co_spawn(Background::executor(), std::move(task), asio::use_future);
        if (future.wait_for(std::chrono::seconds(90)) != std::future_status::ready)
            throw std::runtime_error("the coroutine did not end");
        return future.get();
    }

    /// The next event as text; "end" at the end.
    static std::string next(VoiceSession& session) {
        const auto event = run(session.events().next());
        return event ? text(*event) : "end";
    }
    static Lines next(VoiceSession& session, int count) {
        Lines lines;
        for (int i = 0; i < count; ++i)
            lines.push_back(next(session));
        return lines;
    }

    static std::span<const std::byte> bytes(std::string_view text) { return std::as_bytes(std::span(text)); }

  private:
    // Trust is set up while there is one thread.
    LocalAuthority& authority_ = trustedAuthority();
    BackgroundThreads background_;
};

/// One thread that waits for the network, and a clock that stands still unless a test moves it: no limit is
/// ever reached by slowness.
class NetworkLoop : public ::testing::Test {
  protected:
    template <class T>
    std::shared_ptr<std::optional<T>> start(asio::awaitable<T> task) {
        auto answer = std::make_shared<std::optional<T>>();
        asio::co_spawn(loop.context, std::move(task), [answer](const std::exception_ptr& error, T value) {
            EXPECT_FALSE(error);
            answer->emplace(std::move(value));
        });
        return answer;
    }
    void start(asio::awaitable<void> task) { asio::co_spawn(loop.context, std::move(task), asio::detached); }
    void runUntil(const std::function<bool()>& done) {
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(90);
        while (!done() && std::chrono::steady_clock::now() < giveUp) {
            loop.context.restart();
            loop.context.run_one_for(std::chrono::milliseconds(10));
        }
        ASSERT_TRUE(done()) << "nothing came";
    }

    LocalAuthority& authority = trustedAuthority(); // while there is one thread
    Loop loop;
};

inline std::string providerName(const ::testing::TestParamInfo<VoiceProvider>& info) {
    return std::string(rawValue(info.param));
}

} // namespace velto::test
