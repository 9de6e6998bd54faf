// A list of login items in memory.
#pragma once

#include "VeltoPlatform/LoginItem.h"

#include <atomic>
#include <string>

namespace velto {

class SimulatedLoginItem : public LoginItem {
  public:
    std::string registerApplication() override { return become(true); }
    std::string unregisterApplication() override { return become(false); }

    bool registered() const { return registered_; }

    /// Answered by every operation instead of doing it, unless it is empty.
    std::string fault;

  private:
    std::string become(bool registered) {
        if (fault.empty())
            registered_ = registered;
        return fault;
    }

    std::atomic<bool> registered_ = false;
};

} // namespace velto
