// The Gemini Live session: the shared client over the Gemini messages.
#pragma once

#include "VeltoShared/voice/VoiceClient.h"

#include <string>

namespace velto {

class GeminiLiveClient final : public VoiceClient {
  public:
    /// Model and voice are used unchanged. The host is read from the preferences here.
    GeminiLiveClient(const std::string& apiKey, std::string model, std::string voice,
                     std::string systemInstruction);
    /// With a host of the caller's, "host[:port]".
    GeminiLiveClient(const std::string& apiKey, std::string model, std::string voice,
                     std::string systemInstruction, std::string host, VoiceSocket::Limits limits = {});
};

} // namespace velto
