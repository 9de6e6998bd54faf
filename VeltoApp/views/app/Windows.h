// The application with its windows.
#pragma once

namespace velto {

/// As `runHeadless`, with the main window, on Qt's loop: shows it after the launch sequence and goes on until
/// the last window is closed. `arguments` as the program got them. Answers the exit code.
int runWindowed(int argumentCount, char** arguments);

} // namespace velto
