// The messages that a client of the OpenAI Realtime API (beta, "realtime=v1") may send, checked to the key.
#pragma once

#include "rehearsal/server/ClientMessage.h"
#include "rehearsal/server/Violation.h"

#include <string_view>
#include <variant>

namespace velto::rehearsal {

/// "response.create": the model is to go on from the items so far.
struct ResponseRequest {};
using OpenAIClientMessage = std::variant<ClientMessage, ResponseRequest>;

/// One message by itself, whatever came before it. Audio is at 24 kHz; a text turn or a tool response is the
/// item alone, which asks for nothing before a ResponseRequest.
Checked<OpenAIClientMessage> parseOpenAIMessage(std::string_view text);

} // namespace velto::rehearsal
