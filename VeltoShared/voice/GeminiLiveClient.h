// The Gemini Live session.
#pragma once

#include "VeltoShared/voice/GeminiMessages.h"
#include "VeltoShared/voice/ProviderClient.h"

namespace velto {

using GeminiLiveClient = ProviderClient<GeminiMessages>;

} // namespace velto
