// What /proc tells about processes.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace velto::ProcessFiles {

/// The file name of a process's program; empty when it cannot be told.
std::string executable(pid_t pid);
bool exists(pid_t pid);
/// Whether a process is `ancestor` or was started by it or by one of its descendants.
bool descends(pid_t pid, pid_t ancestor);
/// This user's processes, in the order of their numbers.
std::vector<pid_t> own();

} // namespace velto::ProcessFiles
