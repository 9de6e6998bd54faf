#include "VeltoShared/audio/AudioBridge.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Preferences.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioRouting.h"

#include <cstdint>
#include <limits>

namespace velto::AudioBridge {
namespace {

const std::string activeKey = "bridgeActive";
const std::string previousInputKey = "bridgePrevInput";
const std::string previousOutputKey = "bridgePrevOutput";

void save(const std::string& key, std::optional<AudioObjectID> device) {
    if (device)
        platform().preferences->set(key, std::int64_t{*device});
}

/// 0 when nothing usable is saved.
AudioObjectID saved(const std::string& key) {
    const auto value = platform().preferences->integer(key);
    if (value < 0 || value > std::numeric_limits<AudioObjectID>::max())
        return 0;
    return static_cast<AudioObjectID>(value);
}

} // namespace

bool installed() {
    return AudioDevices::find(inputDevice).has_value() && AudioDevices::find(outputDevice).has_value();
}

Status enforce(bool inputOnly) {
    Status status;
    status.ok = installed();
    status.input = AudioRouting::defaultInputName();
    if (status.ok) {
        if (status.input != inputDevice)
            if (const auto device = AudioDevices::find(inputDevice))
                AudioRouting::setDefaultInput(device->id);
        if (inputOnly) {
            status.message = "Uplink routing (input only)";
        } else {
            if (AudioRouting::defaultOutputName() != outputDevice)
                if (const auto device = AudioDevices::find(outputDevice))
                    AudioRouting::setDefaultOutput(device->id);
            status.message = "Bridge routing OK";
        }
        status.input = AudioRouting::defaultInputName();
    } else {
        status.message = "Bridge devices not installed — install in Settings → Debug → Drivers";
    }
    status.output = AudioRouting::defaultOutputName();
    return status;
}

Status enforceSavingPrevious(bool inputOnly) {
    if (!platform().preferences->boolean(activeKey)) {
        save(previousInputKey, AudioRouting::defaultInputID());
        save(previousOutputKey, AudioRouting::defaultOutputID());
        platform().preferences->set(activeKey, true);
    }
    return enforce(inputOnly);
}

bool restoreIfNeeded() {
    auto& preferences = *platform().preferences;
    if (!preferences.boolean(activeKey))
        return false;
    const auto input = saved(previousInputKey);
    const auto output = saved(previousOutputKey);
    if (input != 0)
        AudioRouting::setDefaultInput(input);
    if (output != 0)
        AudioRouting::setDefaultOutput(output);
    preferences.set(activeKey, false);
    return true;
}

} // namespace velto::AudioBridge
