// Which client belongs to which provider.
#include "VeltoShared/voice/VoiceSessionFactory.h"

#include "VeltoShared/voice/GeminiLiveClient.h"
#include "VeltoShared/voice/OpenAIRealtimeClient.h"

namespace velto {

std::shared_ptr<VoiceSession> makeVoiceSession(VoiceProvider provider, std::string apiKey, std::string model,
                                               std::string voice, std::string systemInstruction) {
    switch (provider) {
    case VoiceProvider::gemini:
        return std::make_shared<GeminiLiveClient>(std::move(apiKey), std::move(model), std::move(voice),
                                                  std::move(systemInstruction));
    case VoiceProvider::openai:
        return std::make_shared<OpenAIRealtimeClient>(std::move(apiKey), std::move(model), std::move(voice),
                                                      std::move(systemInstruction));
    }
    return nullptr;
}

} // namespace velto
