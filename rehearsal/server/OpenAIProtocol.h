// The OpenAI Realtime API (beta, "realtime=v1"), the service's side.
#pragma once

#include "rehearsal/server/OpenAIServerMessages.h"
#include "rehearsal/server/ServerProtocol.h"
#include "rehearsal/server/SessionOrder.h"

#include <string>

namespace velto::rehearsal {

/// Everything goes as text frames. What a response is asked for is answered when the model begins to speak; a
/// response is done when its sound has played, where the service is done when it has sent it.
class OpenAIProtocol final : public ServerProtocol {
  public:
    static constexpr std::string_view path = "/v1/realtime";

    explicit OpenAIProtocol(Send send) : messages_(std::move(send)) {}

    VoiceProvider provider() const override { return VoiceProvider::openai; }
    double inputRate() const override { return 24000; }
    std::optional<Refusal> handshake(const HttpRequest& request, std::string_view apiKey) override;
    Checked<std::optional<ClientMessage>> receive(std::string_view text) override;
    void connected() override;
    void configured() override { messages_.sessionUpdated(configuration_); }
    void callerBegins(Position at) override;
    void callerSaid(std::string_view text, Position at) override;
    void callerEnds(Position at) override;
    void turnBegins() override;
    void audio(std::span<const std::int16_t> samples) override { messages_.audioDelta(samples); }
    void agentSaid(std::string_view fragment) override { messages_.transcriptDelta(fragment); }
    void turnEnds(std::optional<std::string_view> endCallReason) override;
    void interrupted() override;
    void toolAnswered() override;

  private:
    Checked<std::optional<ClientMessage>> acceptMessage(ClientMessage message);
    Checked<std::optional<ClientMessage>> acceptResponseRequest();

    OpenAIServerMessages messages_;
    SessionOrder order_;
    std::string model_;
    ConfigurationMessage configuration_;
    std::optional<ClientMessage> item_; ///< for which a response has not been asked yet
    bool callerTalks_ = false;
};

} // namespace velto::rehearsal
