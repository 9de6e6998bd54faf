#include "VeltoPlatform/linux/PulseCatalogue.h"

#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseTapSink.h"

#include <pulse/introspect.h>

#include <algorithm>
#include <map>
#include <string_view>

namespace velto::PulseCatalogue {
namespace {

/// 32-bit FNV-1a.
std::uint32_t hash(std::string_view text) {
    std::uint32_t value = 2166136261U;
    for (const char character : text)
        value = (value ^ static_cast<unsigned char>(character)) * 16777619U;
    return value;
}

std::string key(const PulseDevice& device) {
    return device.output.channels > 0 ? "sink " + device.output.serverName
                                      : "source " + device.input.serverName;
}

/// Names of one hash are told apart in their alphabetical order, whatever order the server lists them in.
void identify(std::vector<PulseDevice>& devices) {
    std::map<std::string, PulseDevice*> ordered;
    for (auto& device : devices)
        ordered.emplace(key(device), &device);
    std::map<AudioObjectID, bool> taken;
    for (auto& [name, device] : ordered) {
        auto id = hash(name) | 0x80000000U;
        while (taken.contains(id))
            id = (id + 1) | 0x80000000U;
        taken[id] = true;
        device->id = id;
    }
}

std::string text(const char* characters) {
    return characters == nullptr ? std::string() : std::string(characters);
}

} // namespace

std::vector<PulseDevice> devices(const std::vector<PulseEndpoint>& sinks,
                                 const std::vector<PulseEndpoint>& sources) {
    std::vector<PulseDevice> list;
    list.reserve(sinks.size() + sources.size());
    for (const auto& sink : sinks)
        list.push_back({0, sink, {}});
    for (const auto& source : sources) {
        const auto partner = std::ranges::find_if(list, [&](const PulseDevice& device) {
            return device.input.channels == 0 && device.output.description == source.description;
        });
        if (partner != list.end())
            partner->input = source;
        else
            list.push_back({0, {}, source});
    }
    identify(list);
    return list;
}

std::optional<std::vector<PulseDevice>> read(PulseServer& server) {
    std::vector<PulseEndpoint> sinks;
    std::vector<PulseEndpoint> sources;
    const bool answered = server.ask([&](pa_context* context) {
        return std::vector<pa_operation*>{
            pa_context_get_sink_info_list(
                context,
                [](pa_context*, const pa_sink_info* sink, int end, void* list) {
                    if (end == 0 && !PulseTapSink::isOne(*sink))
                        static_cast<std::vector<PulseEndpoint>*>(list)->push_back(
                            {text(sink->name), text(sink->description), sink->sample_spec.channels});
                },
                &sinks),
            pa_context_get_source_info_list(
                context,
                [](pa_context*, const pa_source_info* source, int end, void* list) {
                    if (end == 0 && source->monitor_of_sink == PA_INVALID_INDEX)
                        static_cast<std::vector<PulseEndpoint>*>(list)->push_back(
                            {text(source->name), text(source->description), source->sample_spec.channels});
                },
                &sources)};
    });
    if (!answered)
        return std::nullopt;
    return devices(sinks, sources);
}

} // namespace velto::PulseCatalogue
