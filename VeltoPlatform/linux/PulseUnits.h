// Makes output units on the sound server.
#pragma once

#include "VeltoPlatform/OutputUnits.h"

#include <memory>

namespace velto {

class PulseServer;

class PulseUnits final : public OutputUnits {
  public:
    explicit PulseUnits(std::shared_ptr<PulseServer> server);

    /// Also while the server is away: a unit waits for it.
    bool available() override { return true; }
    std::unique_ptr<OutputUnit> instantiate() override;

  private:
    std::shared_ptr<PulseServer> server_;
};

} // namespace velto
