// Counts what the program allocates, for the paths that must not.
#pragma once

#include <cstddef>

namespace velto::test {

/// Calls of operator new, of all threads, since the program began. Linked in by the library
/// `velto_allocation_counter` alone.
std::size_t allocationCount();

} // namespace velto::test
