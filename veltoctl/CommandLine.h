// The command line's words.
#pragma once

#include "veltoctl/Commands.h"

#include <functional>

namespace velto::ctl {

/// Parses and, unless that was all, runs; answers the program's exit. Messages say what was wrong.
int runCommandLine(int argc, char** argv, const std::function<int(const Arguments&, Output&)>& run);

} // namespace velto::ctl
