// A background thread and helpers for tests that talk to a real server on this computer.
#pragma once

#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/voice/GeminiLiveClient.h"
#include "tests/support/ScriptedTlsServer.h"
#include "tests/support/TrustedAuthority.h"
#include "tests/voice/EventText.h"

#include <gtest/gtest.h>

#include <boost/asio/use_future.hpp>

#include <future>

namespace velto::test {

using Lines = std::vector<std::string>;

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

    static std::shared_ptr<GeminiLiveClient> client(const std::string& host,
                                                    VoiceSocket::Limits limits = {}) {
        return std::make_shared<GeminiLiveClient>(
            SessionOptions{"secret key", "model", "Puck", "Be brief.", host}, limits);
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

} // namespace velto::test
