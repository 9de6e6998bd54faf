// Process taps on the sound server, and the devices that carry them: known to this process alone.
#pragma once

#include "VeltoPlatform/ProcessTaps.h"
#include "VeltoPlatform/linux/PulseCatalogue.h"
#include "VeltoPlatform/linux/PulsePlayers.h"
#include "VeltoPlatform/linux/PulseTap.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace velto {

/// A tap is one stereo mixdown of one process, private; a device carries one tap. Other descriptions are
/// refused, and so is a second muted tap while there is one. Shared by the hardware, which lists the devices,
/// and the units, which capture from them.
class PulseTaps final : public ProcessTaps {
  public:
    explicit PulseTaps(std::shared_ptr<PulseServer> server);
    ~PulseTaps() override;
    PulseTaps(const PulseTaps&) = delete;
    PulseTaps& operator=(const PulseTaps&) = delete;

    std::optional<AudioObjectID> createProcessTap(const ProcessTapDescription& description) override;
    bool destroyProcessTap(AudioObjectID tap) override;
    std::optional<std::string> tapUID(AudioObjectID tap) override;
    std::optional<AudioObjectID>
    createAggregateDevice(const AggregateDeviceDescription& description) override;
    bool destroyAggregateDevice(AudioObjectID device) override;
    bool sweep() override;

    /// As the catalogue lists devices.
    std::vector<PulseDevice> devices();
    /// None when there is no such device.
    std::shared_ptr<const PulseTapDevice> device(AudioObjectID device);

  private:
    AudioObjectID newID();
    bool serverIsThere();
    bool mute(PulseTap& tap);
    bool mutesOne();

    std::shared_ptr<PulseServer> server_;

    // Under the server's lock:
    AudioObjectID lastID_;
    std::map<AudioObjectID, std::shared_ptr<PulseTap>> taps_;
    std::map<AudioObjectID, std::shared_ptr<PulseTapDevice>> devices_;
    std::unique_ptr<PulsePlayers> players_; ///< while there are taps
};

} // namespace velto
