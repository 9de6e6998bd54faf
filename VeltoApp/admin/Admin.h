// Commands with administrator rights.
#pragma once

#include "VeltoApp/app/Helper.h"

#include <string>

namespace velto::Admin {

/// Runs one shell command line as the administrator and waits for its end; the first run of the process asks
/// the user, for as long as they take. `status` is the authorization's (`AdminStatus`), 0 also when the
/// command itself failed, whose exit status is not to be had. `stdout` is what it wrote; `stderr` says
/// "authorization failed (STATUS)" when `status` is not 0. A thread that may block.
Helper::Result run(const std::string& command);

} // namespace velto::Admin
