// The sound server's sinks and sources as devices.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class PulseServer;

/// One side of a device as the server lists it.
struct PulseEndpoint {
    std::string serverName;
    std::string description;
    std::uint32_t channels = 0; ///< 0: the device has no such side
};

/// A sink and a source of one description are one device.
struct PulseDevice {
    AudioObjectID id = 0;
    PulseEndpoint output;
    PulseEndpoint input;

    const PulseEndpoint& side(AudioDirection direction) const {
        return direction == AudioDirection::input ? input : output;
    }
    /// Display name.
    const std::string& name() const { return output.channels > 0 ? output.description : input.description; }
};

namespace PulseCatalogue {

/// Sinks in the server's order, each with the first free source of its description; then the other sources.
/// An identifier is a hash of the server's own name for the device, so it outlives the server; its highest
/// bit is set, which tells it from a process.
std::vector<PulseDevice> devices(const std::vector<PulseEndpoint>& sinks,
                                 const std::vector<PulseEndpoint>& sources);
/// Asks the server; none when it does not answer. Monitors of sinks and the sinks of taps are
/// left out.
std::optional<std::vector<PulseDevice>> read(PulseServer& server);

} // namespace PulseCatalogue
} // namespace velto
