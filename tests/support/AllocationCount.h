// Counts what the calling thread allocates with operator new. Link `velto_allocation_count` to use it.
#pragma once

#include <cstdint>

namespace velto::test {

class AllocationCount {
  public:
    AllocationCount() : before_(ofThisThread()) {}
    /// Since construction, on this thread.
    std::uint64_t value() const { return ofThisThread() - before_; }
    /// Since the thread began.
    static std::uint64_t ofThisThread();

  private:
    std::uint64_t before_;
};

} // namespace velto::test
