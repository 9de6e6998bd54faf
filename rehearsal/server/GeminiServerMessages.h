// The messages that the Gemini Live API (v1beta, BidiGenerateContent) sends to its client.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <span>
#include <string>
#include <string_view>

/// Each answers the compact JSON text of one message.
namespace velto::rehearsal::GeminiServerMessages {

std::string setupComplete();
/// 24 kHz mono.
std::string audio(std::span<const std::int16_t> samples);
std::string inputTranscription(std::string_view text);
std::string outputTranscription(std::string_view text);
std::string interrupted();
std::string turnComplete();
/// A call of `end_call`.
std::string endCall(std::string_view id, std::string_view reason);

} // namespace velto::rehearsal::GeminiServerMessages
