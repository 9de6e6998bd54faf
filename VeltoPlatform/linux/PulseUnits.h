// Makes output units on the sound server.
#pragma once

#include "VeltoPlatform/OutputUnits.h"

#include <memory>

namespace velto {

class PulseServer;
class PulseTaps;

class PulseUnits final : public OutputUnits {
  public:
    /// With `taps`, units capture from their devices too.
    explicit PulseUnits(std::shared_ptr<PulseServer> server, std::shared_ptr<PulseTaps> taps = {});

    /// Also while the server is away: a unit waits for it.
    bool available() override { return true; }
    std::unique_ptr<OutputUnit> instantiate() override;

  private:
    std::shared_ptr<PulseServer> server_;
    std::shared_ptr<PulseTaps> taps_;
};

} // namespace velto
