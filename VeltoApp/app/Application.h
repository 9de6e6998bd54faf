// The application's life: what runs once the program has started.
#pragma once

#include <functional>

namespace velto {

/// Launch sequence. Main thread, with platform and executors installed: logs the process and the
/// accessibility trust, puts back default devices that a killed run left switched, says whether the virtual
/// devices exist and where their drivers can be installed from, starts the control server. From then on
/// SIGUSR1 makes it read the stored keys again.
void applicationDidFinishLaunching();

/// Runs the application without windows on the calling thread, which becomes the main thread, until the
/// process is ended; answers 1, and says so on standard error, where this user's Velto runs already. The
/// platform is installed. Starts the background thread, calls `prepare` (may be empty) on the main thread,
/// then the launch sequence. There is no shutdown handling: what a quit interrupts is repaired at the next
/// launch.
int runHeadless(const std::function<void()>& prepare = {});

} // namespace velto
