// What another application does with sound.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <optional>
#include <string_view>

/// Any thread, synchronous.
namespace velto::AudioProcess {

/// The audio object of the first running application with exactly this identifier; none when it is not
/// running or has nothing to do with sound.
std::optional<AudioObjectID> objectID(std::string_view bundleID);
/// Whether that application records; false when the question cannot be answered.
bool isRunningInput(std::string_view bundleID);

} // namespace velto::AudioProcess
