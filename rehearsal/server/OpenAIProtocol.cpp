#include "rehearsal/server/OpenAIProtocol.h"

#include "rehearsal/server/OpenAIClientMessages.h"

#include <boost/json.hpp>

#include <utility>

namespace velto::rehearsal {
namespace {

constexpr const char* kCallID = "call_Rehearsal000001";

} // namespace

std::optional<Refusal> OpenAIProtocol::handshake(const HttpRequest& request, std::string_view apiKey) {
    const auto model = request.onlyQueryItem("model");
    if (!model || model->empty())
        return Refusal{.what = "the query is not the one item 'model'"};
    if (percentDecoded(request.target).value_or("").find(apiKey) != std::string::npos)
        return Refusal{.what = "the key is in the target"};
    if (request.field("OpenAI-Beta") != "realtime=v1")
        return Refusal{.what = "no field OpenAI-Beta with 'realtime=v1'"};
    const auto authorization = request.field("Authorization");
    if (!authorization || !authorization->starts_with("Bearer "))
        return Refusal{.what = "no field Authorization with 'Bearer '"};
    if (authorization->substr(7) != apiKey)
        return Refusal{.status = 401, .what = "another key"};
    model_ = *model;
    return {};
}

Checked<std::optional<ClientMessage>> OpenAIProtocol::receive(std::string_view text) {
    auto message = parseOpenAIMessage(text);
    if (!message)
        return message.error();
    if (std::holds_alternative<ResponseRequest>(*message))
        return acceptResponseRequest();
    return acceptMessage(std::get<ClientMessage>(std::move(*message)));
}

Checked<std::optional<ClientMessage>> OpenAIProtocol::acceptMessage(ClientMessage message) {
    if (auto wrong = order_.accept(message))
        return std::move(*wrong);
    const bool isItem =
        std::holds_alternative<TextMessage>(message) || std::holds_alternative<ToolResponseMessage>(message);
    if (!isItem) {
        if (const auto* configuration = std::get_if<ConfigurationMessage>(&message))
            configuration_ = *configuration;
        return std::optional(std::move(message));
    }
    if (item_)
        return Violation{Violation::policy, "an item before a response to the last one was asked for"};
    messages_.itemCreated(message);
    item_ = std::move(message);
    return std::optional<ClientMessage>();
}

Checked<std::optional<ClientMessage>> OpenAIProtocol::acceptResponseRequest() {
    if (!item_)
        return Violation{Violation::policy, "a request for a response without an item before it"};
    return std::exchange(item_, std::nullopt);
}

void OpenAIProtocol::connected() {
    messages_.sessionCreated(model_);
    order_.ready();
}

void OpenAIProtocol::callerBegins(Position at) {
    callerTalks_ = true;
    messages_.speechStarted(at);
}

void OpenAIProtocol::callerSaid(std::string_view text, Position at) {
    if (!callerTalks_)
        messages_.speechStarted(at);
    callerTalks_ = false;
    messages_.speechStopped(at, text);
}

void OpenAIProtocol::callerEnds(Position at) {
    if (std::exchange(callerTalks_, false))
        messages_.speechStopped(at, "");
}

void OpenAIProtocol::turnBegins() {
    messages_.responseCreated();
    messages_.messageAdded();
}

void OpenAIProtocol::turnEnds(std::optional<std::string_view> endCallReason) {
    messages_.messageDone(true);
    if (endCallReason) {
        order_.toolCalled(kCallID, {});
        messages_.functionCall(kCallID,
                               boost::json::serialize(boost::json::object{{"reason", *endCallReason}}));
    }
    messages_.responseDone(false);
}

void OpenAIProtocol::interrupted() {
    messages_.messageDone(false);
    messages_.responseDone(true);
}

void OpenAIProtocol::toolAnswered() {
    messages_.responseCreated();
    messages_.responseDone(false);
}

} // namespace velto::rehearsal
