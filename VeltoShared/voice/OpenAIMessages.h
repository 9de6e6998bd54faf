// The messages of OpenAI's Realtime API, beta protocol "realtime=v1"
// (platform.openai.com/docs/guides/realtime).
#pragma once

#include "VeltoShared/voice/AudioMessage.h"
#include "VeltoShared/voice/MessageReader.h"
#include "VeltoShared/voice/ProviderMessages.h"
#include "VeltoShared/voice/VoiceProvider.h"

#include <unordered_map>

namespace velto {

/// Audio and text out, a named voice, 16-bit PCM both ways, the server's voice activity detection with its
/// own defaults, transcription of the caller, and the one tool `end_call`. A session is reported complete
/// twice: when it is created and when it is updated.
class OpenAIMessages final : public ProviderMessages {
  public:
    static constexpr VoiceProvider provider = VoiceProvider::openai;

    explicit OpenAIMessages(SessionOptions options);

    VoiceSocket::Request request() const override;
    std::string configuration() const override;
    /// 24 000 Hz, 16-bit little-endian mono; neither checked nor converted.
    std::string_view audio(std::span<const std::byte> pcm) override;
    std::vector<std::string> clientText(std::string_view text) const override;
    /// The result is sent as the text that it is; `name` is not sent.
    std::vector<std::string> toolResponse(std::string_view id, std::string_view name,
                                          std::string_view resultJSON) const override;
    std::span<VoiceEvent> handle(std::string_view text) override;

  private:
    void handleMessage(const boost::json::object& message);
    void rememberFunction(const boost::json::object& message);
    void handleFunctionCall(const boost::json::object& message);
    void handleError(const boost::json::object& message);

    SessionOptions options_;
    AudioMessage audio_;
    std::vector<VoiceEvent> events_;
    MessageReader reader_;
    /// By call: the name comes with the call's begin, the arguments at its end.
    std::unordered_map<std::string, std::string> functionNames_;
    /// Speech of the callee interrupts only a response that is under way.
    bool responseActive_ = false;
};

} // namespace velto
