// The root helper, run by anybody.
#include "velto-admin-helper/CommandServer.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>

int main() {
    ::signal(SIGPIPE, SIG_IGN);
    const char* const user = std::getenv("PKEXEC_UID");
    velto::serveCommands(STDIN_FILENO, user ? user : "");
}
