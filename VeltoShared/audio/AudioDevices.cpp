#include "VeltoShared/audio/AudioDevices.h"

#include "VeltoPlatform/Platform.h"

#include <algorithm>
#include <numeric>

namespace velto::AudioDevices {
namespace {

int channels(AudioObjectID device, AudioDirection direction) {
    const auto streams = platform().audioHardware->streamConfiguration(device, direction);
    if (!streams)
        return 0;
    return static_cast<int>(std::accumulate(streams->begin(), streams->end(), 0U));
}

} // namespace

std::vector<AudioDeviceInfo> all() {
    std::vector<AudioDeviceInfo> list;
    const auto devices = platform().audioHardware->devices();
    if (!devices)
        return list;
    list.reserve(devices->size());
    for (const auto device : *devices)
        list.push_back({device, name(device), channels(device, AudioDirection::input),
                        channels(device, AudioDirection::output)});
    return list;
}

std::string name(AudioObjectID device) {
    return platform().audioHardware->deviceName(device).value_or("Unknown");
}

std::optional<AudioDeviceInfo> find(std::string_view name) {
    const auto list = all();
    const auto found = std::ranges::find(list, name, &AudioDeviceInfo::name);
    if (found == list.end())
        return std::nullopt;
    return *found;
}

} // namespace velto::AudioDevices
