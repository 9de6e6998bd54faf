// The application with its windows.
#pragma once

namespace velto {

/// As `runHeadless`, with the main window, on Qt's loop. Shows it after the launch sequence and goes on until
/// it is closed, which asks first while a call runs. A second launch on the same desktop brings the first
/// one's windows to the front and ends. `arguments` as the program got them. Answers the exit code; what
/// stands in the way (no display, another Velto that has no windows or does not answer) is said on standard
/// error.
int runWindowed(int argumentCount, char** arguments);

} // namespace velto
