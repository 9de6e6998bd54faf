// The messages that a client of the Gemini Live API (v1beta, BidiGenerateContent) may send, checked to the
// key.
#pragma once

#include "rehearsal/server/ClientMessage.h"
#include "rehearsal/server/Violation.h"

#include <string_view>

namespace velto::rehearsal {

/// One message by itself, whatever came before it. Audio is at 16 kHz.
Checked<ClientMessage> parseGeminiMessage(std::string_view text);

} // namespace velto::rehearsal
