// What a client asks for, whichever provider's messages it is said in.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <string>
#include <string_view>
#include <variant>

namespace velto::rehearsal {

struct ConfigurationMessage {
    std::string voice;
    std::string systemInstruction;
};
struct AudioMessage {
    Samples samples; ///< mono, at the rate of the protocol
};
/// A turn of the user's that the model is to answer.
struct TextMessage {
    std::string text;
};
struct ToolResponseMessage {
    std::string id;
    std::string name;   ///< empty where the provider's message has none
    std::string output; ///< JSON
};
using ClientMessage = std::variant<ConfigurationMessage, AudioMessage, TextMessage, ToolResponseMessage>;

/// The one tool that a client declares. Written down a second time on purpose: the client is compared with
/// it.
inline constexpr std::string_view kEndCall = "end_call";
inline constexpr std::string_view kEndCallDescription =
    "Hang up the phone call. Call this once the goal is complete and you have said goodbye.";

} // namespace velto::rehearsal
