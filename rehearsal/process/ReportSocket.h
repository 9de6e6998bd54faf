// Reports to a director that did not start this process, over a local socket.
#pragma once

#include "rehearsal/process/Reports.h"

#include <string>

namespace velto::rehearsal {

/// Sends each report as one line to whoever listens on the stream socket at this path. Nobody waits for the
/// listener: one that is not there, leaves, or lets the socket's buffer fill up gets no more. The function
/// may be called on any thread; lines stay whole.
Report reportToSocket(const std::string& path);

} // namespace velto::rehearsal
