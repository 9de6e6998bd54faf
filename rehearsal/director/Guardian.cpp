// Keeps a rehearsal from leaving anything behind.
#include "rehearsal/director/Guardian.h"

#include "rehearsal/process/ProcessTree.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <iostream>
#include <optional>

namespace velto::rehearsal {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;
constexpr std::chrono::milliseconds kTimeToEnd{1500};
constexpr std::chrono::milliseconds kTimeToKill{2000};

SteadyTime now() {
    return std::chrono::steady_clock::now();
}

sigset_t watchedSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD})
        ::sigaddset(&signals, number);
    return signals;
}

void removeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::remove_all(folder, error);
}

/// In /tmp, or where that cannot be written to, where the session has a place for such things. Empty when
/// there is none, which has been said then.
std::filesystem::path privateFolder() {
    // Sockets live in it, and their paths are limited to 107 bytes.
    constexpr std::size_t longest = 64;
    std::error_code inTmp;
    const std::array<const char*, 3> places{"/tmp", ::getenv("TMPDIR"),   // NOLINT(concurrency-mt-unsafe)
                                            ::getenv("XDG_RUNTIME_DIR")}; // NOLINT(concurrency-mt-unsafe)
    for (const auto* const place : places) {
        if (place == nullptr || *place != '/')
            continue;
        auto pattern = std::string(place) + "/velto-XXXXXX";
        if (pattern.size() <= longest && ::mkdtemp(pattern.data()) != nullptr)
            return pattern;
        if (!inTmp)
            inTmp.assign(errno, std::generic_category());
    }
    std::cerr << "velto-rehearse: cannot make a folder in /tmp: " << inTmp.message()
              << "; TMPDIR may name another place, not longer than 50 characters\n";
    return {};
}

/// Waits for the child to end, and passes signals on to it. None when somebody else has reaped it.
std::optional<int> waitFor(pid_t child) {
    const auto signals = watchedSignals();
    std::optional<SteadyTime> deadline;
    while (true) {
        int status = 0;
        const pid_t ended = ::waitpid(child, &status, WNOHANG);
        if (ended == child)
            return status;
        if (ended < 0 && errno == ECHILD)
            return {};
        timespec patience{0, 200'000'000};
        const int number = ::sigtimedwait(&signals, nullptr, &patience);
        if (number > 0 && number != SIGCHLD) {
            if (!deadline)
                deadline = now() + kTimeToEnd;
            ::kill(child, number);
        }
        if (deadline && now() > *deadline)
            ::kill(child, SIGKILL);
    }
}

} // namespace

std::string describeExit(int status) {
    if (WIFSIGNALED(status)) {
        const auto* const name = ::sigabbrev_np(WTERMSIG(status));
        return std::string("was killed (SIG") + (name != nullptr ? name : "?") + ")";
    }
    return "ended with exit code " + std::to_string(WEXITSTATUS(status));
}

void endDescendants() {
    const auto deadline = now() + kTimeToKill;
    // A dead child's own children come to this process, as the one that reaps: until none is left.
    while (now() < deadline) {
        for (const auto pid : childrenOf(::getpid()))
            ::kill(pid, SIGKILL);
        pid_t reaped = 0;
        while ((reaped = ::waitpid(-1, nullptr, WNOHANG)) > 0) {
        }
        if (reaped < 0)
            return;
        ::usleep(2000);
    }
}

void GuardianLink::cleanUp() const {
    endDescendants();
    if (!keepFolder_)
        removeFolder(folder_);
}

int runGuarded(const GuardianOptions& options, const std::function<int(const GuardianLink&)>& direct) {
    const auto folder = privateFolder();
    if (folder.empty())
        return 1;
    // Whoever started this process may have had it ignored; then nobody's end could be waited for.
    ::signal(SIGCHLD, SIG_DFL);
    std::array<int, 2> lifeline{-1, -1};
    const auto signals = watchedSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::cout.flush();
    const pid_t child = ::pipe2(lifeline.data(), O_CLOEXEC) == 0 ? ::fork() : -1;
    if (child == 0) {
        ::close(lifeline[1]);
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
        const int code = direct(GuardianLink(folder, lifeline[0], options.keepFolder));
        std::cout.flush();
        std::cerr.flush();
        ::_exit(code);
    }
    int code = 1;
    // Where nobody reads any more what is said, the director ends, and there is still to be cleared up.
    ::signal(SIGPIPE, SIG_IGN);
    if (child > 0) {
        const auto status = waitFor(child);
        if (status && WIFEXITED(*status))
            code = WEXITSTATUS(*status);
        else
            std::cerr << "velto-rehearse: the director " << (status ? describeExit(*status) : "is gone")
                      << std::endl;
    } else {
        std::cerr << "velto-rehearse: cannot start a process\n";
    }
    endDescendants();
    if (!options.keepFolder)
        removeFolder(folder);
    return code;
}

} // namespace velto::rehearsal
