// Voice events as one line of text each, for comparing whole sequences.
#pragma once

#include "VeltoShared/voice/ProviderMessages.h"

#include <initializer_list>
#include <string>
#include <variant>
#include <vector>

namespace velto::test {

struct EventText {
    std::string operator()(const event::Audio& audio) const {
        const auto bytes = audio.chunk.bytes();
        return "audio " + std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    std::string operator()(const event::CallerText& caller) const { return "caller " + caller.text; }
    std::string operator()(const event::AgentText& agent) const { return "agent " + agent.text; }
    std::string operator()(const ToolCall& call) const {
        return "tool " + call.id + "|" + call.name + "|" + call.argsJSON;
    }
    std::string operator()(const event::Closed& closed) const { return "closed " + closed.reason; }
    std::string operator()(const event::SetupComplete&) const { return "setup"; }
    std::string operator()(const event::TurnComplete&) const { return "turn"; }
    std::string operator()(const event::Interrupted&) const { return "interrupted"; }
};

inline std::string text(const VoiceEvent& event) {
    return std::visit(EventText{}, event);
}

using Lines = std::vector<std::string>;

/// What a connection's received messages stand for, all in one.
inline Lines handled(ProviderMessages&& messages, std::initializer_list<std::string> received) {
    Lines lines;
    for (const auto& message : received)
        for (const auto& event : messages.handle(message))
            lines.push_back(text(event));
    return lines;
}

} // namespace velto::test
