// The operating system's taps on what other processes play, and the private devices that carry their sound.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <optional>
#include <string>
#include <vector>

namespace velto {

enum class TapMute {
    unmuted = 0,
    muted = 1,
    mutedWhenTapped = 2, ///< silent on this computer while a unit captures from the tap
};

struct ProcessTapDescription {
    std::string name;
    /// Process objects: the ones tapped, or with `exclusive` the ones left out.
    std::vector<AudioObjectID> processes;
    bool exclusive = false;
    bool isPrivate = false; ///< visible to this process only
    bool mono = false;
    bool mixdown = false; ///< all that the processes play as one stereo stream
    TapMute mute = TapMute::unmuted;

    bool operator==(const ProcessTapDescription&) const = default;
};

struct AggregateDeviceDescription {
    std::string name;
    std::string uid; ///< must not be in use
    bool isPrivate = false;
    bool stacked = false;
    std::vector<std::string> taps; ///< their UIDs

    bool operator==(const AggregateDeviceDescription&) const = default;
};

/// All operations: any thread, synchronous. An aggregate device is a device of `AudioHardware` with two input
/// channels; units capture from it as from any other, and hear silence while the processes play nothing.
class ProcessTaps {
  public:
    virtual ~ProcessTaps() = default;

    /// None when the system refuses: no permission, no such process, or a description it cannot serve.
    /// What the processes begin to play later belongs to the tap as well.
    virtual std::optional<AudioObjectID> createProcessTap(const ProcessTapDescription& description) = 0;
    /// Devices on the tap fall silent. False when there is no such tap.
    virtual bool destroyProcessTap(AudioObjectID tap) = 0;
    virtual std::optional<std::string> tapUID(AudioObjectID tap) = 0;

    /// None when the system refuses; for example when one of the taps is not there.
    virtual std::optional<AudioObjectID>
    createAggregateDevice(const AggregateDeviceDescription& description) = 0;
    /// False when there is no such device.
    virtual bool destroyAggregateDevice(AudioObjectID device) = 0;

    /// Undoes what the taps of a killed run have left in the system; true when there was anything.
    virtual bool sweep() = 0;
};

} // namespace velto
