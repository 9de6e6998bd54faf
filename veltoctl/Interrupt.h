// Ctrl-C while a call is followed.
#pragma once

#include <functional>

namespace velto::ctl {

/// From this call on, the first SIGINT runs `told` on a thread of its own and then ends the process by
/// that signal, so that shells see status 130; a second one ends it at once. Nothing where SIGINT is ignored,
/// as in background jobs of a script. Lives as long as the process.
void onInterrupt(std::function<void()> told);

} // namespace velto::ctl
