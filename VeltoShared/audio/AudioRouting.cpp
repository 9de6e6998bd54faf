#include "VeltoShared/audio/AudioRouting.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoShared/audio/AudioDevices.h"

namespace velto::AudioRouting {
namespace {

std::optional<AudioObjectID> defaultID(AudioDirection direction) {
    const auto device = platform().audioHardware->defaultDevice(direction);
    if (!device || *device == 0)
        return std::nullopt;
    return device;
}

std::string nameOf(std::optional<AudioObjectID> device) {
    return device ? AudioDevices::name(*device) : std::string();
}

} // namespace

std::optional<AudioObjectID> defaultInputID() {
    return defaultID(AudioDirection::input);
}

std::optional<AudioObjectID> defaultOutputID() {
    return defaultID(AudioDirection::output);
}

std::string defaultInputName() {
    return nameOf(defaultInputID());
}

std::string defaultOutputName() {
    return nameOf(defaultOutputID());
}

void setDefaultInput(AudioObjectID device) {
    platform().audioHardware->setDefaultDevice(AudioDirection::input, device);
}

void setDefaultOutput(AudioObjectID device) {
    platform().audioHardware->setDefaultDevice(AudioDirection::output, device);
}

} // namespace velto::AudioRouting
