// The catalogue of audio devices, by display name.
#pragma once

#include "VeltoShared/audio/AudioDeviceInfo.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Any thread; every call asks the platform afresh. Not for audio threads.
namespace velto::AudioDevices {

/// Every device in the platform's order, whatever its channels; empty when the list cannot be read.
std::vector<AudioDeviceInfo> all();
/// "Unknown" when the platform gives no name.
std::string name(AudioObjectID device);
/// The first device of exactly this name, by code units.
std::optional<AudioDeviceInfo> find(std::string_view name);

} // namespace velto::AudioDevices
