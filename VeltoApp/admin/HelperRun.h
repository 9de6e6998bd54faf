// Programs that are run as the user.
#pragma once

#include "VeltoApp/app/Helper.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velto::Helper {

/// Runs the program at a path (PATH is not searched) with these arguments and waits until it has ended and
/// nobody holds its standard output or error any more. It reads nothing from its standard input and gets no
/// descriptor of ours. `cwd`: none is this process's. `env` is laid over this process's environment. `status`
/// is the exit code, 128 + the number of the signal that ended it, or −1 when it could not be started, with
/// the reason in `stderr`. A thread that may block.
Result run(const std::string& executable, const std::vector<std::string>& arguments,
           const std::optional<std::filesystem::path>& cwd = {},
           const std::optional<std::map<std::string, std::string>>& env = {});

} // namespace velto::Helper
