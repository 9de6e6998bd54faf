// Joining the Gemini messages to the shared client.
#include "VeltoShared/voice/GeminiLiveClient.h"

#include "VeltoShared/voice/GeminiMessages.h"
#include "VeltoShared/voice/ProviderHosts.h"

namespace velto {

GeminiLiveClient::GeminiLiveClient(const std::string& apiKey, std::string model, std::string voice,
                                   std::string systemInstruction)
    : GeminiLiveClient(apiKey, std::move(model), std::move(voice), std::move(systemInstruction),
                       ProviderHosts::gemini()) {}

GeminiLiveClient::GeminiLiveClient(const std::string& apiKey, std::string model, std::string voice,
                                   std::string systemInstruction, std::string host,
                                   VoiceSocket::Limits limits)
    : VoiceClient(std::make_unique<GeminiMessages>(apiKey, std::move(model), std::move(voice),
                                                   std::move(systemInstruction), std::move(host)),
                  apiKey, limits) {}

} // namespace velto
