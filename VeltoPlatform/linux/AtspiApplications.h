// The programs that take part in the accessibility bus.
#pragma once

#include "VeltoPlatform/linux/AtspiMemory.h"
#include "VeltoPlatform/linux/BusPool.h"

#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace velto {

struct AtspiApplication {
    BusPeerRef peer;
    std::string path; ///< of its root object
    pid_t pid = 0;
};

/// Any thread.
class AtspiApplications {
  public:
    /// Those that an earlier registry listed, then in the registry's order; a process can have several. While
    /// the registry or the bus is silent or answers with an error, what was last listed. Whoever has left the
    /// bus is forgotten by `pool` and `memory`.
    std::vector<AtspiApplication> list(const BusPool::Lease& lease, AtspiMemory& memory);
    /// As last listed.
    std::vector<AtspiApplication> last() const;

  private:
    void findPids(const BusPool::Lease& lease, AtspiMemory& memory,
                  const std::vector<std::pair<std::string, std::string>>& places);

    mutable std::mutex mutex_;
    std::vector<AtspiApplication> last_;
};

} // namespace velto
