// Our side of a benchmark: a provider's client, and its coroutines from outside.
#pragma once

#include "VeltoShared/core/Executors.h"
#include "VeltoShared/voice/GeminiLiveClient.h"
#include "VeltoShared/voice/OpenAIRealtimeClient.h"
#include "bench/voice/Figures.h"

#include <boost/asio/use_future.hpp>

#include <memory>
#include <string>

namespace velto::bench {

/// The PCM bytes of an outgoing message: 20 ms at 16 kHz.
inline constexpr std::size_t kChunkBytes = 640;

inline std::shared_ptr<VoiceSession> makeClient(VoiceProvider provider, const std::string& host) {
    const SessionOptions options{"made-up", std::string(defaultModel(provider)),
                                 std::string(defaultVoice(provider)), "Be brief.", host};
    if (provider == VoiceProvider::gemini)
        return std::make_shared<GeminiLiveClient>(options);
    return std::make_shared<OpenAIRealtimeClient>(options);
}

/// Runs a coroutine on `Background` and waits for it.
template <class T>
T run(asio::awaitable<T> task) {
    return asio::co_spawn(Background::executor(), std::move(task), asio::use_future).get();
}

inline void connect(VoiceSession& session) {
    if (const auto connected = run(session.connect()); !connected)
        giveUp(connected.error().description);
}

} // namespace velto::bench
