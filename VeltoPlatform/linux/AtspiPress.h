// Presses, of which none may come twice.
#pragma once

#include "VeltoPlatform/linux/AtspiElement.h"
#include "VeltoPlatform/linux/BusPool.h"

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>

namespace velto {

/// A press that its program did not answer in time is not lost: it waits there, and happens when the program
/// goes on. Until that has been answered, the element is not pressed again. Any thread.
class AtspiPress {
  public:
    /// Answers what the program answered; false, without sending anything, for what is gone, disabled or
    /// hidden, for a program that is silent, and while an earlier press waits.
    bool press(const BusPool::Lease& lease, const AtspiElement& element);

  private:
    using Place = std::pair<std::string, std::string>; ///< peer and path
    struct Pending {
        std::mutex mutex;
        std::set<Place> places;
    };

    bool perform(const BusPool::Lease& lease, const AtspiElement& element, int action);

    const std::shared_ptr<Pending> pending_ = std::make_shared<Pending>();
};

} // namespace velto
