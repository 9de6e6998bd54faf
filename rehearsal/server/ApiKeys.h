// The keys that the voice server takes for right.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"

#include <map>
#include <string>

namespace velto::rehearsal {

using ApiKeys = std::map<VoiceProvider, std::string>;

/// The variable by which the server's program is told the key. A key is a secret even here: not among the
/// arguments, which everybody on the computer can read.
inline std::string keyVariable(VoiceProvider provider) {
    return provider == VoiceProvider::gemini ? "VELTO_REHEARSAL_GEMINI_KEY" : "VELTO_REHEARSAL_OPENAI_KEY";
}

} // namespace velto::rehearsal
