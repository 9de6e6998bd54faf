// What /proc tells about processes.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace velto::ProcessFiles {

/// The file name of a process's program; empty when it cannot be told.
std::string executable(pid_t pid);
bool exists(pid_t pid);
/// This user's processes, in the order of their numbers.
std::vector<pid_t> own();

} // namespace velto::ProcessFiles
