#include "VeltoPlatform/linux/AtspiPress.h"

#include "VeltoPlatform/linux/AtspiCalls.h"
#include "VeltoPlatform/linux/BusExchange.h"

#include <boost/algorithm/string/predicate.hpp>

#include <optional>
#include <string_view>
#include <vector>

namespace velto {
namespace {

/// The place of the action that a click would have.
std::optional<int> pressAmong(const std::vector<std::string>& actions) {
    for (const std::string_view wanted : {"press", "click", "activate"})
        for (std::size_t i = 0; i < actions.size(); ++i)
            if (boost::algorithm::iequals(actions[i], wanted))
                return static_cast<int>(i);
    // Some toolkits translate the names.
    return actions.size() == 1 ? std::optional(0) : std::nullopt;
}

} // namespace

bool AtspiPress::press(const BusPool::Lease& lease, const AtspiElement& element) {
    if (element.peer->bus != lease.pool().serial() || element.peer->silent)
        return false;
    const auto* const peer = element.peer->name.c_str();
    const auto* const path = element.path.c_str();
    std::uint64_t state = 0;
    std::optional<int> action;
    {
        BusExchange exchange(lease);
        exchange.ask(element.peer, AtspiCalls::getState(exchange.bus(), peer, path),
                     [&](const BusReply& reply) { state = AtspiCalls::state(reply).value_or(0); });
        exchange.ask(element.peer, AtspiCalls::getActions(exchange.bus(), peer, path),
                     [&](const BusReply& reply) { action = pressAmong(AtspiCalls::actions(reply)); });
        exchange.finish();
    }
    // Some toolkits say "enabled", some "sensitive", most both.
    const bool usable =
        AtspiState::has(state, AtspiState::enabled) || AtspiState::has(state, AtspiState::sensitive);
    return usable && AtspiState::has(state, AtspiState::visible) && action &&
           perform(lease, element, *action);
}

bool AtspiPress::perform(const BusPool::Lease& lease, const AtspiElement& element, int action) {
    const Place place(element.peer->name, element.path);
    {
        const std::scoped_lock lock(pending_->mutex);
        if (!pending_->places.insert(place).second)
            return false;
    }
    const auto over = [pending = pending_, place] {
        const std::scoped_lock lock(pending->mutex);
        pending->places.erase(place);
    };
    BusExchange exchange(lease);
    bool done = false;
    if (!exchange.ask(
            element.peer,
            AtspiCalls::doAction(exchange.bus(), element.peer->name.c_str(), element.path.c_str(), action),
            [&](const BusReply& reply) { done = AtspiCalls::truth(reply).value_or(false); }, over))
        over();
    exchange.finish();
    if (exchange.gaveUp(*element.peer))
        lease.pool().note("a press in " + element.peer->title + " was not answered in time");
    return done;
}

} // namespace velto
