// Storing, listing and removing API keys, none of which is ever an argument or printed.
#pragma once

#include "veltoctl/Commands.h"

#include <sys/types.h>

#include <functional>

namespace velto::ctl::Keys {

/// `reload` makes a running application read its keys again; false when that cannot be. Answers the program's
/// exit.
int run(const Arguments& arguments, Output& output, const std::function<bool(pid_t)>& reload);

} // namespace velto::ctl::Keys
