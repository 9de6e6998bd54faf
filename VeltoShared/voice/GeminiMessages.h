// The messages of Google's Generative Language API, BidiGenerateContent v1beta (ai.google.dev/api/live).
#pragma once

#include "VeltoShared/voice/AudioMessage.h"
#include "VeltoShared/voice/MessageReader.h"
#include "VeltoShared/voice/ProviderMessages.h"
#include "VeltoShared/voice/VoiceProvider.h"

namespace velto {

/// Speech in and out, the voice by name, the server's voice activity detection with barge-in, transcription
/// of both sides, and the one tool `end_call`.
class GeminiMessages final : public ProviderMessages {
  public:
    static constexpr VoiceProvider provider = VoiceProvider::gemini;

    explicit GeminiMessages(SessionOptions options);

    VoiceSocket::Request request() const override;
    std::string configuration() const override;
    /// 16 000 Hz, 16-bit little-endian mono; neither checked nor converted.
    std::string_view audio(std::span<const std::byte> pcm) override;
    std::vector<std::string> clientText(std::string_view text) const override;
    /// A `resultJSON` that is no JSON object or array is answered as an empty object.
    std::vector<std::string> toolResponse(std::string_view id, std::string_view name,
                                          std::string_view resultJSON) const override;
    std::span<VoiceEvent> handle(std::string_view text) override;

  private:
    void handleMessage(const boost::json::object& message);
    bool handleToolCall(const boost::json::object& message);
    void handleServerContent(const boost::json::object& content);
    void handleModelTurn(const boost::json::object& content);

    SessionOptions options_;
    AudioMessage audio_;
    std::vector<VoiceEvent> events_;
    MessageReader reader_;
};

} // namespace velto
