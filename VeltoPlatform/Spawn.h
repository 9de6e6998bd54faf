// Starts a program as a child process.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

namespace velto {

struct SpawnRequest {
    std::string program;                  ///< a path, or a name that is looked for on this process's PATH
    std::vector<std::string> arguments;   ///< without the program's own name
    std::vector<std::string> environment; ///< all of it, as "NAME=value"
    std::string folder{};                 ///< empty: this process's
    int input = -1; ///< descriptors of its standard input, output and error; −1: /dev/null
    int output = -1;
    int errors = -1;
    bool ownSession = false; ///< leads a session and a process group of its own
};

/// The child has no other descriptor of ours, no blocked and no ignored signal. A program that cannot be
/// executed or a folder that is not there is an error and leaves no child. Any thread.
std::error_code spawn(const SpawnRequest& request, pid_t& child);

/// As exec wants them: pointers into the texts, and a null one behind them.
std::vector<char*> nullTerminated(std::vector<std::string>& texts);

/// Readable once the process has ended; none on an error, `errno` says which.
FileDescriptor exitDescriptor(pid_t process);

/// Waits for a child's end and reaps it: its exit code, or 128 + the number of the signal that ended it; −1
/// when somebody else has reaped it. Any thread.
std::int32_t waitForExit(pid_t child);

} // namespace velto
