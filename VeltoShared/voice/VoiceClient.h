// A voice session over one provider's messages and the one transport.
#pragma once

#include "VeltoShared/voice/ProviderMessages.h"
#include "VeltoShared/voice/VoiceSession.h"
#include "VeltoShared/voice/VoiceSocket.h"

#include <memory>
#include <string>
#include <string_view>

namespace velto {

/// Everything that the providers' sessions have in common. Its work is done on `Background`, whichever
/// executor awaits an operation; a caller that is there already is not sent round. The object may go at any
/// time: the receive loop holds it weakly, and a connection that is still open is then cut. A coroutine that
/// awaits `events().next()` must have ended before.
///
/// `connect` waits up to ten seconds for a network that is not there and up to a minute for the whole
/// opening; it fails with a description for people. After `close` it fails too. Of audio, at most eight
/// chunks wait for a peer that has stopped reading; a further one is dropped, since late speech is no use.
/// `close` does not wait for the server's half of the closing handshake, which goes on for two seconds at
/// most.
class VoiceClient : public VoiceSession {
  public:
    /// `secret` is blotted out of every description and reason, which are cut after 2000 bytes. Opens
    /// nothing.
    VoiceClient(std::unique_ptr<ProviderMessages> messages, std::string_view secret,
                VoiceSocket::Limits limits = {});
    ~VoiceClient() override;
    VoiceClient(const VoiceClient&) = delete;
    VoiceClient& operator=(const VoiceClient&) = delete;

    VoiceEvents& events() override;
    asio::awaitable<Result<>> connect() override;
    asio::awaitable<void> sendAudio(std::span<const std::byte> pcm) override;
    asio::awaitable<void> sendClientText(std::string text) override;
    asio::awaitable<void> sendToolResponse(std::string id, std::string name, std::string resultJSON) override;
    asio::awaitable<void> close() override;

    /// The server has accepted the configuration at least once. Any thread.
    bool isReady() const;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace velto
