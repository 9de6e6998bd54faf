// The Gemini Live API (v1beta, BidiGenerateContent), the service's side.
#pragma once

#include "rehearsal/server/ServerProtocol.h"
#include "rehearsal/server/SessionOrder.h"

namespace velto::rehearsal {

/// Audio goes as binary frames, as the service does, all else as text.
class GeminiProtocol final : public ServerProtocol {
  public:
    static constexpr std::string_view path =
        "/ws/google.ai.generativelanguage.v1beta.GenerativeService.BidiGenerateContent";

    explicit GeminiProtocol(Send send) : send_(std::move(send)) {}

    VoiceProvider provider() const override { return VoiceProvider::gemini; }
    double inputRate() const override { return 16000; }
    std::optional<Refusal> handshake(const HttpRequest& request, std::string_view apiKey) override;
    Checked<std::optional<ClientMessage>> receive(std::string_view text) override;
    void connected() override {}
    void configured() override;
    void callerBegins(Position) override {}
    void callerSaid(std::string_view text, Position at) override;
    void callerEnds(Position) override {}
    void turnBegins() override {}
    void audio(std::span<const std::int16_t> samples) override;
    void agentSaid(std::string_view fragment) override;
    void turnEnds(std::optional<std::string_view> endCallReason) override;
    void interrupted() override;
    void toolAnswered() override {}

  private:
    Send send_;
    SessionOrder order_;
};

} // namespace velto::rehearsal
