#include "VeltoPlatform/linux/AskToReload.h"

#include "VeltoPlatform/FileDescriptor.h"
#include "VeltoPlatform/linux/ProcessFiles.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>

namespace velto {
namespace {

constexpr int kReload = SIGUSR1;

bool catchesIt(pid_t process) {
    constexpr std::string_view kCaught = "SigCgt:";
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(kCaught))
            return (std::strtoull(line.c_str() + kCaught.size(), nullptr, 16) & (1ULL << (kReload - 1))) != 0;
    return false;
}

} // namespace

bool askToReload(pid_t process, std::string_view program) {
    // Held from before the look, so that the number cannot be given to another process in between.
    const FileDescriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    return handle && ProcessFiles::executable(process) == program && catchesIt(process) &&
           ::syscall(SYS_pidfd_send_signal, handle.get(), kReload, nullptr, 0) == 0;
}

} // namespace velto
