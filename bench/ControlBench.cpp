// The control socket in requests a second, one connection each: our server, in a process of its own, beside
// mpv's JSON IPC; then one client alone and beside 1000 connections that say nothing.
#include "VeltoApp/control/ControlServer.h"
#include "VeltoApp/history/CallHistoryStore.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/simulated/SimulatedStores.h"
#include "VeltoShared/control/ControlAddress.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Executors.h"
#include "tests/support/TemporaryFolder.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <thread>

namespace velto {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::string_view kStatus = "{\"cmd\":\"status\"}\n";
constexpr std::string_view kMpvName = "{\"command\":[\"client_name\"],\"request_id\":1}\n";

int connected(const std::filesystem::path& path) {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const ControlAddress address(path);
    if (fd >= 0 && ::connect(fd, address.get(), ControlAddress::kLength) == 0)
        return fd;
    if (fd >= 0)
        ::close(fd);
    return -1;
}

/// One request on a connection of its own; false when no answer came.
bool ask(const std::filesystem::path& path, std::string_view request, std::string_view answered) {
    const int fd = connected(path);
    if (fd < 0)
        return false;
    bool ok =
        ::send(fd, request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size());
    std::string reply;
    std::array<char, 4096> chunk{};
    while (ok && (reply.empty() || reply.back() != '\n' || reply.find(answered) == std::string::npos)) {
        const auto count = ::read(fd, chunk.data(), chunk.size());
        ok = count > 0;
        if (ok)
            reply.append(chunk.data(), static_cast<std::size_t>(count));
    }
    ::close(fd);
    return ok;
}

struct Peer {
    std::filesystem::path path;
    std::string_view request;
    std::string_view answered;
};

double requestsPerSecond(const Peer& peer, int clients, std::chrono::milliseconds length) {
    std::atomic<bool> stop = false;
    std::atomic<long> answered = 0;
    std::vector<std::thread> threads;
    const auto begin = Clock::now();
    for (int i = 0; i < clients; ++i)
        threads.emplace_back([&] {
            long mine = 0;
            while (!stop)
                mine += ask(peer.path, peer.request, peer.answered) ? 1 : 0;
            answered += mine;
        });
    std::this_thread::sleep_for(length);
    stop = true;
    for (auto& thread : threads)
        thread.join();
    return static_cast<double>(answered) / std::chrono::duration<double>(Clock::now() - begin).count();
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

/// A child process that dies with this one.
pid_t child(const std::function<void()>& work) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        work();
        ::_exit(1);
    }
    return pid;
}

void serve() {
    asio::io_context main{1};
    const auto guard = asio::make_work_guard(main);
    MainThread::install(main.get_executor());
    const BackgroundThreads background;
    CallHistoryStore history(AppPaths::historyFile());
    const auto server = std::make_shared<ControlServer>(history);
    server->start({}, {}, {});
    main.run();
}

void playNothing(const std::filesystem::path& socket) {
    const auto ipc = "--input-ipc-server=" + socket.string();
    ::execlp("mpv", "mpv", "--idle", "--no-config", "--really-quiet", "--no-terminal", ipc.c_str(), nullptr);
}

bool waitFor(const Peer& peer) {
    for (int i = 0; i < 200; ++i) {
        if (ask(peer.path, peer.request, peer.answered))
            return true;
        std::this_thread::sleep_for(50ms);
    }
    return false;
}

void compare(const Peer& ours, const Peer& mpv) {
    for (const int clients : {1, 8}) {
        std::vector<double> us;
        std::vector<double> them;
        for (int round = 0; round < 5; ++round) {
            us.push_back(requestsPerSecond(ours, clients, 600ms));
            them.push_back(requestsPerSecond(mpv, clients, 600ms));
        }
        std::printf("%d clients: ours %.0f/s, mpv %.0f/s, ratio %.2f%s\n", clients, median(us), median(them),
                    median(us) / median(them), clients == 8 ? " (aim: at least 2)" : "");
    }
}

double cpuSeconds(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// One client for a while: requests a second, and the processor time of server and client a request, which
/// other load on the machine disturbs less.
struct Pace {
    std::vector<double> rate;
    std::vector<double> micros;

    void measure(const Peer& peer, pid_t server) {
        clockid_t serverClock{};
        ::clock_getcpuclockid(server, &serverClock);
        const auto cpu = [&] { return cpuSeconds(serverClock) + cpuSeconds(CLOCK_PROCESS_CPUTIME_ID); };
        const auto before = cpu();
        const auto begin = Clock::now();
        rate.push_back(requestsPerSecond(peer, 1, 400ms));
        const auto requests = rate.back() * std::chrono::duration<double>(Clock::now() - begin).count();
        micros.push_back((cpu() - before) * 1e6 / requests);
    }
};

void besideSilence(const Peer& ours, pid_t server) {
    Pace alone;
    Pace beside;
    for (int round = 0; round < 9; ++round) {
        alone.measure(ours, server);
        std::vector<int> silent;
        for (int i = 0; i < 1000; ++i)
            if (const int fd = connected(ours.path); fd >= 0)
                silent.push_back(fd);
        if (silent.size() < 1000)
            std::printf("only %zu silent connections\n", silent.size());
        waitFor(ours); // connections are accepted in their order: the server knows the silent ones
        beside.measure(ours, server);
        for (const int fd : silent)
            ::close(fd);
        std::this_thread::sleep_for(50ms);
    }
    std::printf(
        "one client: alone %.0f/s, beside 1000 silent connections %.0f/s, ratio %.3f (aim: at least 0.9)\n",
        median(alone.rate), median(beside.rate), median(beside.rate) / median(alone.rate));
    std::printf("processor time a request: alone %.1f us, beside them %.1f us\n", median(alone.micros),
                median(beside.micros));
}

int run() {
    const test::TemporaryFolder own;
    const auto& folder = own.path();
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);

    SimulatedFolders folders(folder);
    Platform platform;
    platform.folders = &folders;
    installPlatform(platform);
    const Peer ours{AppPaths::controlSocket(), kStatus, "\"ok\":true"};
    const Peer mpv{folder / "mpv.sock", kMpvName, "\"request_id\":1"};
    const pid_t server = child(serve);
    const pid_t player = child([&] { playNothing(mpv.path); });

    int status = 0;
    if (!waitFor(ours) || !waitFor(mpv)) {
        std::puts("a server did not come up; is mpv installed?");
        status = 1;
    } else {
        compare(ours, mpv);
        besideSilence(ours, server);
    }
    for (const pid_t pid : {server, player}) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
    return status;
}

} // namespace
} // namespace velto

int main() {
    return velto::run();
}
