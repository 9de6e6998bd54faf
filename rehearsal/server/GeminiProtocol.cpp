#include "rehearsal/server/GeminiProtocol.h"

#include "rehearsal/server/GeminiClientMessages.h"
#include "rehearsal/server/GeminiServerMessages.h"

namespace velto::rehearsal {
namespace {

constexpr const char* kCallID = "function-call-1";

} // namespace

std::optional<Refusal> GeminiProtocol::handshake(const HttpRequest& request, std::string_view apiKey) {
    const std::string_view target(request.target);
    if (!target.substr(path.size()).starts_with("?key=") || target.find('&') != std::string_view::npos)
        return Refusal{.what = "the query is not the one item 'key'"};
    if (request.onlyQueryItem("key") != apiKey)
        return Refusal{.what = "another key"};
    return {};
}

Checked<std::optional<ClientMessage>> GeminiProtocol::receive(std::string_view text) {
    auto message = parseGeminiMessage(text);
    if (!message)
        return message.error();
    if (auto wrong = order_.accept(*message))
        return std::move(*wrong);
    return std::optional(std::move(*message));
}

void GeminiProtocol::configured() {
    send_({GeminiServerMessages::setupComplete()});
    order_.ready();
}

void GeminiProtocol::callerSaid(std::string_view text, Position) {
    send_({GeminiServerMessages::inputTranscription(text)});
}

void GeminiProtocol::audio(std::span<const std::int16_t> samples) {
    send_({GeminiServerMessages::audio(samples), true});
}

void GeminiProtocol::agentSaid(std::string_view fragment) {
    send_({GeminiServerMessages::outputTranscription(fragment)});
}

void GeminiProtocol::turnEnds(std::optional<std::string_view> endCallReason) {
    send_({GeminiServerMessages::turnComplete()});
    if (!endCallReason)
        return;
    order_.toolCalled(kCallID, std::string(kEndCall));
    send_({GeminiServerMessages::endCall(kCallID, *endCallReason)});
}

void GeminiProtocol::interrupted() {
    send_({GeminiServerMessages::interrupted()});
    send_({GeminiServerMessages::turnComplete()});
}

} // namespace velto::rehearsal
