#include "veltoctl/Interrupt.h"

#include <csignal>
#include <thread>

namespace velto::ctl {

void onInterrupt(std::function<void()> told) {
    struct sigaction present {};
    ::sigaction(SIGINT, nullptr, &present);
    if (present.sa_handler == SIG_IGN)
        return;
    sigset_t interrupts;
    ::sigemptyset(&interrupts);
    ::sigaddset(&interrupts, SIGINT);
    ::pthread_sigmask(SIG_BLOCK, &interrupts, nullptr);
    std::thread([interrupts, told = std::move(told)] {
        int signal = 0;
        ::sigwait(&interrupts, &signal);
        ::pthread_sigmask(SIG_UNBLOCK, &interrupts, nullptr);
        told();
        ::raise(SIGINT);
    }).detach();
}

} // namespace velto::ctl
