// One audio device as the rest of the system sees it.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <cstddef>
#include <functional>
#include <string>

namespace velto {

/// Identified by `id`; equal when all four fields are.
struct AudioDeviceInfo {
    AudioObjectID id = 0;
    std::string name;       ///< "Unknown" when the platform gives none
    int inputChannels = 0;  ///< of all its input streams together; 0 for an output-only device
    int outputChannels = 0; ///< of all its output streams together

    bool operator==(const AudioDeviceInfo&) const = default;
};

} // namespace velto

template <>
struct std::hash<velto::AudioDeviceInfo> {
    std::size_t operator()(const velto::AudioDeviceInfo& device) const noexcept {
        return std::hash<velto::AudioObjectID>{}(device.id);
    }
};
