// Process taps and aggregate devices of the simulated computer.
#pragma once

#include "VeltoPlatform/ProcessTaps.h"

#include <map>
#include <string>
#include <vector>

namespace velto {

class SimulatedAudio;

/// What a test may break.
struct SimulatedTapFaults {
    bool noPermission = false; ///< taps are refused
    bool tapIsNone = false;    ///< creation succeeds with object 0
    bool uidFails = false;
    bool aggregateFails = false;
    bool aggregateIsNone = false; ///< creation succeeds with object 0
    bool destroyingFails = false; ///< of both kinds; the objects stay
};

/// Part of its `SimulatedAudio`, under whose lock everything happens. Objects are counted with its devices.
class SimulatedTaps final : public ProcessTaps {
  public:
    explicit SimulatedTaps(SimulatedAudio& audio);

    SimulatedTapFaults faults;
    /// What the next `sweep` finds.
    bool leftOver = false;

    std::optional<AudioObjectID> createProcessTap(const ProcessTapDescription& description) override;
    bool destroyProcessTap(AudioObjectID tap) override;
    std::optional<std::string> tapUID(AudioObjectID tap) override;
    std::optional<AudioObjectID>
    createAggregateDevice(const AggregateDeviceDescription& description) override;
    bool destroyAggregateDevice(AudioObjectID device) override;
    bool sweep() override;

    /// Those that exist.
    std::map<AudioObjectID, ProcessTapDescription> taps();
    std::map<AudioObjectID, AggregateDeviceDescription> aggregates();
    /// What was destroyed, in order, such as "aggregate 7".
    std::vector<std::string> destroyed();

    /// Whose sound an aggregate device carries; nobody's for any other device.
    std::vector<AudioObjectID> processesOf(AudioObjectID device);
    /// Whether the process cannot be heard on this computer at the moment.
    bool mutes(AudioObjectID process);

  private:
    bool carries(const AggregateDeviceDescription& aggregate, AudioObjectID tap) const;
    bool isCaptured(AudioObjectID tap) const;

    SimulatedAudio& audio_;
    std::map<AudioObjectID, ProcessTapDescription> taps_;
    std::map<AudioObjectID, AggregateDeviceDescription> aggregates_;
    std::vector<std::string> destroyed_;
};

} // namespace velto
