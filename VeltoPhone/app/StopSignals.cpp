#include "VeltoPhone/app/StopSignals.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace velto::phone {
namespace {

int openSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        ::sigaddset(&signals, number);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

StopSignals::StopSignals() : signals_(openSignals()) {}

void StopSignals::watch(std::function<void()> stop) {
    notifier_ = std::make_unique<QSocketNotifier>(signals_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, stop = std::move(stop)] {
        signalfd_siginfo signal{};
        while (::read(signals_.get(), &signal, sizeof signal) == sizeof signal)
            stop();
    });
}

} // namespace velto::phone
