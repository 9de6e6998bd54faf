// The system's default input and output devices.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <optional>
#include <string>

/// Any thread. Nothing reports an error: a read that fails is "no default", a refused write is not noticed.
namespace velto::AudioRouting {

/// None when the read fails or there is no default.
std::optional<AudioObjectID> defaultInputID();
std::optional<AudioObjectID> defaultOutputID();

/// "" when there is no default.
std::string defaultInputName();
std::string defaultOutputName();

void setDefaultInput(AudioObjectID device);
void setDefaultOutput(AudioObjectID device);

} // namespace velto::AudioRouting
