// The session of a provider, for whoever does not care which.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"
#include "VeltoShared/voice/VoiceSession.h"

#include <memory>
#include <string>

namespace velto {

/// A new session for one call; opens nothing and never answers none.
std::shared_ptr<VoiceSession> makeVoiceSession(VoiceProvider provider, std::string apiKey, std::string model,
                                               std::string voice, std::string systemInstruction);

} // namespace velto
