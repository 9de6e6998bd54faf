// Which process was started by which.
#pragma once

#include <sys/types.h>

#include <vector>

namespace velto::rehearsal {

/// As /proc has it at this moment; a process that has ended and was not reaped is among them.
std::vector<pid_t> childrenOf(pid_t parent);
/// Children, their children and so on, without the process itself.
std::vector<pid_t> descendantsOf(pid_t ancestor);

} // namespace velto::rehearsal
