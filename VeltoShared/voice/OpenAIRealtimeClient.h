// The OpenAI Realtime session.
#pragma once

#include "VeltoShared/voice/OpenAIMessages.h"
#include "VeltoShared/voice/ProviderClient.h"

namespace velto {

using OpenAIRealtimeClient = ProviderClient<OpenAIMessages>;

} // namespace velto
