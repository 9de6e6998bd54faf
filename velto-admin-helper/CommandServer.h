// Runs the commands that arrive on a socket (VeltoPlatform/linux/AdminProtocol.h), one at a time.
#pragma once

#include <string>

namespace velto {

/// Until the other side hangs up or breaks the protocol; a command that runs then is ended first. `user`: the
/// number of the user who asked.
void serveCommands(int socket, const std::string& user);

} // namespace velto
