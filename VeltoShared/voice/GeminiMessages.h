// The messages of Google's Generative Language API, BidiGenerateContent v1beta (ai.google.dev/api/live).
#pragma once

#include "VeltoShared/voice/AudioMessage.h"
#include "VeltoShared/voice/ProviderMessages.h"

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parser.hpp>
#include <boost/json/value.hpp>

#include <memory>

namespace velto {

/// Speech in and out, the voice by name, the server's voice activity detection with barge-in, transcription
/// of both sides, and the one tool `end_call`. JSON nested deeper than 64 levels is malformed.
class GeminiMessages final : public ProviderMessages {
  public:
    /// `model` without prefix; `host` as VoiceSocket::Request takes it.
    GeminiMessages(std::string apiKey, std::string model, std::string voice, std::string systemInstruction,
                   std::string host);

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

    std::string apiKey_;
    std::string model_;
    std::string voice_;
    std::string systemInstruction_;
    std::string host_;
    AudioMessage audio_;
    std::vector<VoiceEvent> events_;
    // Of a received message; the usual audio message fits.
    static constexpr std::size_t kScratch = std::size_t{160} << 10;
    std::unique_ptr<unsigned char[]> scratch_ = std::make_unique_for_overwrite<unsigned char[]>(kScratch);
    boost::json::monotonic_resource memory_{scratch_.get(), kScratch};
    boost::json::parser parser_;
};

} // namespace velto
