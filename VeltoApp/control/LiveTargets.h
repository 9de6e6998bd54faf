// The application's own session and state objects, as the control server's commands see them.
#pragma once

namespace velto {

/// Starts ControlServer::shared() with the process-wide objects. Main thread; a second call changes nothing.
void startControlServer();

} // namespace velto
