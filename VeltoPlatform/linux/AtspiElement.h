// Handles of accessible objects on the accessibility bus.
#pragma once

#include "VeltoPlatform/Accessibility.h"
#include "VeltoPlatform/linux/AtspiRoles.h"
#include "VeltoPlatform/linux/BusPool.h"

#include <atomic>
#include <string>
#include <utility>

namespace velto {

/// An object of a program. What it was found to be is kept, so that a second reading need not ask again.
class AtspiElement : public Element {
  public:
    AtspiElement(BusPeerRef peer, std::string path) : peer(std::move(peer)), path(std::move(path)) {}

    const BusPeerRef peer;
    const std::string path;

    static constexpr std::uint32_t kNotRead = ~0u;
    mutable std::atomic<std::uint32_t> role{kNotRead};
    mutable std::atomic<bool> stateRead{false};
    mutable std::atomic<bool> hidden{false};
};

/// All that a process shows; its objects on the bus are looked up at each reading.
class AtspiApplicationElement : public Element {
  public:
    explicit AtspiApplicationElement(pid_t pid) : pid(pid) {}

    const pid_t pid;
};

} // namespace velto
