// The root helper: what pkexec starts for Velto. It runs command lines as root for the program that holds the
// other end of its standard input, for as long as that does, and for nobody else.
#include "velto-admin-helper/CommandServer.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

/// The number of the user who was asked; empty when pkexec has not started this program.
std::string user() {
    const char* const value = std::getenv("PKEXEC_UID"); // NOLINT(concurrency-mt-unsafe): one thread
    const std::string number = value ? value : "";
    const bool digits =
        std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
    return digits && ::getuid() == 0 && ::geteuid() == 0 ? number : "";
}

bool isMessageSocket(int descriptor) {
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET;
}

} // namespace

int main() {
    const auto asking = user();
    if (asking.empty() || !isMessageSocket(STDIN_FILENO)) {
        std::cerr << "velto-admin-helper is started by Velto, through pkexec, and does nothing by itself\n";
        return 1;
    }
    // Whoever ends Velto from its terminal is not to hit a command half-way: it is told by the socket.
    ::setsid();
    ::signal(SIGPIPE, SIG_IGN);
    ::umask(022);
    if (::chdir("/") != 0)
        return 1;
    ::openlog("velto-admin-helper", LOG_PID, LOG_AUTHPRIV);
    velto::serveCommands(STDIN_FILENO, asking);
}
