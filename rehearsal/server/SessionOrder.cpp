#include "rehearsal/server/SessionOrder.h"

namespace velto::rehearsal {

std::optional<Violation> SessionOrder::accept(const ClientMessage& message) {
    const bool isConfiguration = std::holds_alternative<ConfigurationMessage>(message);
    if (isConfiguration == configured_)
        return Violation{Violation::policy, isConfiguration ? "a second configuration"
                                                            : "the first message is not the configuration"};
    configured_ = true;
    if (std::holds_alternative<TextMessage>(message))
        return acceptText();
    if (const auto* response = std::get_if<ToolResponseMessage>(&message))
        return acceptToolResponse(*response);
    return {};
}

std::optional<Violation> SessionOrder::acceptText() {
    if (!ready_)
        return Violation{Violation::policy, "a text turn before the server was ready"};
    if (std::exchange(textSeen_, true))
        return Violation{Violation::policy, "a second text turn"};
    return {};
}

std::optional<Violation> SessionOrder::acceptToolResponse(const ToolResponseMessage& response) {
    if (!openCall_)
        return Violation{Violation::policy, "a tool response that nobody asked for"};
    if (response.id != openCall_->first || response.name != openCall_->second)
        return Violation{Violation::policy, "a tool response for '" + response.id + "' (" + response.name +
                                                ") instead of '" + openCall_->first + "'"};
    openCall_.reset();
    return {};
}

} // namespace velto::rehearsal
