// The accessibility bus's launcher on the session bus: whether accessibility is on, and where its bus is.
#pragma once

#include "VeltoPlatform/linux/BusPool.h"

#include <memory>
#include <mutex>
#include <string>

namespace velto {

/// Any thread. Starts no program, except in `switchOn`.
class AtspiLauncher {
  public:
    AtspiLauncher(std::string sessionAddress, std::shared_ptr<BusPatience> patience, BusPool::Report report);

    struct Status {
        bool silent = false; ///< and nothing else is known
        bool enabled = false;
        std::string busAddress; ///< of the accessibility bus; empty when there is none
        std::string trouble;    ///< for people: why not all of this is known and there; else empty
    };
    Status status();
    /// Asks for it and returns; reports what came of it when that is known, which may be at a later call of
    /// anything here.
    void switchOn();

  private:
    std::shared_ptr<BusPool> makePool() const;
    /// Connected again when the session bus was restarted.
    BusPool::Lease lease();

    const std::string sessionAddress_;
    const std::shared_ptr<BusPatience> patience_;
    const BusPool::Report report_;
    std::mutex mutex_;
    std::shared_ptr<BusPool> pool_;
};

} // namespace velto
