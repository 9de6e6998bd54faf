#include "VeltoPlatform/linux/PulseTapSweep.h"

#include "VeltoPlatform/linux/PulseTapSink.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velto {
namespace {

struct TapSink {
    std::uint32_t module = PA_INVALID_INDEX;
    std::string owner;
};

struct Found {
    std::map<std::uint32_t, TapSink> sinks; ///< by index
    std::set<std::string> owners;           ///< processes that may have taps, and live
    std::vector<std::uint32_t> players;     ///< on the sinks
};

pa_operation* listSinks(pa_context* context, Found& found) {
    return pa_context_get_sink_info_list(
        context,
        [](pa_context*, const pa_sink_info* sink, int end, void* data) {
            if (end != 0 || !PulseTapSink::isOne(*sink))
                return;
            const char* owner = pa_proplist_gets(sink->proplist, PulseTapSink::ownerProperty);
            static_cast<Found*>(data)->sinks[sink->index] = {sink->owner_module,
                                                             owner == nullptr ? "" : owner};
        },
        &found);
}

pa_operation* listOwners(pa_context* context, Found& found) {
    return pa_context_get_client_info_list(
        context,
        [](pa_context*, const pa_client_info* client, int end, void* data) {
            if (end != 0)
                return;
            const char* program = pa_proplist_gets(client->proplist, PA_PROP_APPLICATION_NAME);
            if (program != nullptr && std::strcmp(program, PulseServer::clientName) == 0)
                static_cast<Found*>(data)->owners.insert(std::to_string(processOf(client->proplist)));
        },
        &found);
}

pa_operation* listPlayers(pa_context* context, Found& found) {
    return pa_context_get_sink_input_info_list(
        context,
        [](pa_context*, const pa_sink_input_info* player, int end, void* data) {
            auto& all = *static_cast<Found*>(data);
            if (end == 0 && all.sinks.contains(player->sink))
                all.players.push_back(player->index);
        },
        &found);
}

} // namespace

bool sweepTapSinks(PulseServer& server, bool ownInUse) {
    Found found;
    const bool listed = server.ask([&](pa_context* context) {
        return std::vector<pa_operation*>{listSinks(context, found), listOwners(context, found)};
    });
    if (!ownInUse)
        found.owners.erase(std::to_string(::getpid()));
    std::erase_if(found.sinks, [&](const auto& sink) { return found.owners.contains(sink.second.owner); });
    if (!listed || found.sinks.empty())
        return false;
    server.ask([&](pa_context* context) { return std::vector<pa_operation*>{listPlayers(context, found)}; });
    const auto ignore = [](pa_context*, int, void*) {};
    return server.ask([&](pa_context* context) {
        std::vector<pa_operation*> operations;
        operations.reserve(found.players.size() + found.sinks.size());
        for (const auto player : found.players)
            operations.push_back(
                pa_context_move_sink_input_by_name(context, player, "@DEFAULT_SINK@", ignore, nullptr));
        for (const auto& [index, sink] : found.sinks)
            operations.push_back(pa_context_unload_module(context, sink.module, ignore, nullptr));
        return operations;
    });
}

} // namespace velto
