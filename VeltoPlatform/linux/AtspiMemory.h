// What the elements of each program last answered, for the time in which it does not answer.
#pragma once

#include "VeltoPlatform/linux/AtspiElement.h"

#include <map>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace velto {

/// Keeps between 512 and 1024 elements of a program, those read last; texts of at most 4 KB and at most 512
/// children each. Enough for the windows that calls are made with, and a bound on what large ones cost. Any
/// thread.
class AtspiMemory {
  public:
    void remember(const AtspiElement& element, AttributeSet asked, const ElementAttributes& answers);
    /// Fills in what was asked for and has no value.
    void recall(const AtspiElement& element, AttributeSet asked, ElementAttributes& answers) const;
    void forget(const std::string& peer);
    /// The programs of which anything is kept, by their names on the bus.
    std::vector<std::string> peers() const;

  private:
    using Elements = std::unordered_map<std::string, ElementAttributes>;
    /// Two generations: when the young one is full, the old one goes.
    struct Generations {
        Elements young;
        Elements old;
    };

    mutable std::mutex mutex_;
    std::map<std::string, Generations> programs_;
};

} // namespace velto
