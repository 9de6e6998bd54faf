// Everything that runs during a rehearsal.
#include "rehearsal/director/Stage.h"

#include <boost/json.hpp>

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace velto::rehearsal {
namespace {

constexpr Stage::Duration kLook{20};
constexpr Stage::Duration kTimeToEnd{5000};
/// After a failure nobody is judged, and a guardian with a signal to pass on does not wait long.
constexpr Stage::Duration kTimeToEndInHaste{1000};

int openSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        ::sigaddset(&signals, number);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

/// As from waitpid, but leaves the reaping to somebody else. None while it runs.
std::optional<int> peekExit(pid_t pid) {
    siginfo_t info{};
    if (::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == 0)
        return {};
    return info.si_code == CLD_EXITED ? W_EXITCODE(info.si_status, 0) : info.si_status;
}

/// A sentence for an end that was not what was asked for.
std::optional<std::string> wrongEnd(const std::string& title, int status, bool killed) {
    if (killed)
        return title + " did not end when it was asked to, and was killed";
    if ((WIFEXITED(status) && WEXITSTATUS(status) == 0) ||
        (WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM))
        return {};
    return title + " " + describeExit(status) + " when it was to end";
}

} // namespace

Stage::Stage(const GuardianLink& guardian) : guardian_(guardian), signals_(openSignals()) {}

Stage::~Stage() {
    end();
    for (const auto& watched : watched_)
        ::close(watched.descriptor);
    ::close(signals_);
}

ChildProcess* Stage::add(const ChildProgram& program, Heard heard) {
    auto process = ChildProcess::start(program);
    if (!process) {
        fail(program.title + " could not be started");
        return nullptr;
    }
    actors_.push_back({std::move(*process), std::move(heard)});
    return &actors_.back().process;
}

bool Stage::expect(const std::filesystem::path& socket, Heard heard, std::function<void()> left) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const auto& path = socket.native();
    FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (path.size() >= sizeof address.sun_path ||
        ::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener.get(), 4) != 0) {
        fail("no socket could be made at " + path);
        return false;
    }
    entrances_.push_back({std::move(listener), std::move(heard), std::move(left), {}});
    return true;
}

void Stage::receiveVisitors() {
    for (auto& entrance : entrances_) {
        if (FileDescriptor visitor(::accept4(entrance.listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
            visitor)
            entrance.visitors.emplace_back(std::move(visitor));
        for (auto visitor = entrance.visitors.begin(); visitor != entrance.visitors.end();) {
            tell(visitor->readLines(), entrance.heard);
            if (visitor->descriptor() >= 0) {
                ++visitor;
                continue;
            }
            visitor = entrance.visitors.erase(visitor);
            if (!ending_)
                entrance.left();
        }
    }
}

void Stage::kill(ChildProcess& process) {
    for (auto& actor : actors_)
        if (&actor.process == &process) {
            actor.over = true;
            process.kill();
        }
}

void Stage::unwatch(pid_t pid) {
    std::erase_if(watched_, [pid](const Watched& watched) {
        if (watched.pid != pid)
            return false;
        ::close(watched.descriptor);
        return true;
    });
}

void Stage::watch(const std::string& title, pid_t pid) {
    watched_.push_back({title, pid, static_cast<int>(::syscall(SYS_pidfd_open, pid, 0))});
}

void Stage::fail(const std::string& reason) {
    if (failure_.empty())
        failure_ = reason;
}

bool Stage::waitUntil(const std::function<bool()>& done, Duration limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (failure_.empty()) {
        if (done())
            return true;
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        pump(kLook);
    }
    return false;
}

void Stage::pump(Duration limit) {
    std::vector<pollfd> all{{signals_, POLLIN, 0}, {guardian_.lifeline(), POLLIN, 0}};
    for (const auto& actor : actors_) {
        // poll() skips a negative descriptor.
        all.push_back({actor.process.output(), POLLIN, 0});
        all.push_back({actor.over ? -1 : actor.process.exitDescriptor(), POLLIN, 0});
    }
    for (const auto& watched : watched_)
        all.push_back({watched.descriptor, POLLIN, 0});
    for (const auto& entrance : entrances_) {
        all.push_back({entrance.listener.get(), POLLIN, 0});
        for (const auto& visitor : entrance.visitors)
            all.push_back({visitor.descriptor(), POLLIN, 0});
    }
    if (::poll(all.data(), all.size(), static_cast<int>(limit.count())) <= 0)
        return;
    for (auto& actor : actors_)
        tell(actor.process.readLines(), actor.heard);
    receiveVisitors();
    checkEnds();
    if (signalfd_siginfo info{}; ::read(signals_, &info, sizeof info) == sizeof info) {
        stopCode_ = 128 + static_cast<int>(info.ssi_signo);
        const auto* const name = ::sigabbrev_np(static_cast<int>(info.ssi_signo));
        fail(std::string("stopped by SIG") + (name != nullptr ? name : "?"));
    }
    if (all[1].revents != 0) {
        guardianGone_ = true;
        fail("the guardian (the outer velto-rehearse) was killed");
    }
}

void Stage::tell(const std::vector<std::string>& lines, const Heard& heard) {
    for (const auto& line : lines) {
        boost::json::error_code error;
        const auto value = boost::json::parse(line, error);
        if (!error && value.is_object())
            heard(value.get_object());
    }
}

void Stage::checkEnds() {
    for (auto& actor : actors_)
        if (const auto status = actor.process.exitStatus(); status && !actor.over) {
            actor.over = true;
            tell(actor.process.readLines(), actor.heard);
            if (!ending_)
                fail(actor.process.title() + " " + describeExit(*status));
        }
    for (auto& watched : watched_)
        if (const auto status = ending_ ? std::nullopt : peekExit(watched.pid)) {
            fail(watched.title + " " + describeExit(*status));
            ::close(std::exchange(watched.descriptor, -1));
        }
}

Stage::Duration Stage::timeToEnd() const {
    return failure_.empty() ? kTimeToEnd : kTimeToEndInHaste;
}

std::vector<std::string> Stage::end() {
    ending_ = true;
    std::vector<std::string> wrong;
    for (auto actor = actors_.rbegin(); actor != actors_.rend(); ++actor) {
        if (actor->over)
            continue;
        const auto begin = std::chrono::steady_clock::now();
        actor->process.signal(SIGTERM);
        while (!actor->over && std::chrono::steady_clock::now() - begin < timeToEnd() && !guardianGone_)
            pump(kLook);
        const bool killed = !actor->over;
        if (killed)
            actor->process.signal(SIGKILL);
        while (!actor->over) {
            pump(kLook);
            checkEnds();
        }
        if (auto sentence = wrongEnd(actor->process.title(), actor->process.exitStatus().value_or(0), killed))
            wrong.push_back(std::move(*sentence));
    }
    return wrong;
}

std::optional<std::string> Stage::endOther(const std::string& title, pid_t pid) {
    siginfo_t info{};
    // The number of a process that is not this one's child may have come to another one.
    if (::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0)
        return {};
    const FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    pollfd ended{process.get(), POLLIN, 0};
    const auto isOver = [&] { return ::poll(&ended, 1, 0) > 0; };
    ::syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0);
    waitUntil(isOver, timeToEnd());
    const bool killed = !isOver();
    if (killed)
        ::syscall(SYS_pidfd_send_signal, process.get(), SIGKILL, nullptr, 0);
    return wrongEnd(title, peekExit(pid).value_or(0), killed);
}

} // namespace velto::rehearsal
