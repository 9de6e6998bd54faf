#include "VeltoPlatform/linux/PkexecChild.h"

#include "VeltoPlatform/Spawn.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace velto {
namespace {

/// More than the helper gives a command to end when nobody wants it any more.
constexpr int kToEndMilliseconds = 3000;
constexpr std::size_t kLongestComplaint = 4096;

std::error_code lastError() {
    return {errno, std::system_category()};
}

} // namespace

std::error_code PkexecChild::start(const std::filesystem::path& program) {
    std::array<int, 2> sockets{-1, -1};
    std::array<int, 2> pipe{-1, -1};
    // A socket: unlike a pipe, no other program of the user's can open it through /proc.
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0)
        return lastError();
    socket_ = FileDescriptor(sockets[0]);
    const FileDescriptor theirs(sockets[1]);
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        return lastError();
    errors_ = FileDescriptor(pipe[0]);
    const FileDescriptor theirErrors(pipe[1]);
    if (::fcntl(errors_.get(), F_SETFL, O_NONBLOCK) != 0)
        return lastError();

    // Started by this very process, about which polkit then asks, and never to ask for a password on a
    // terminal. pkexec needs little of the environment, and refuses to run with some values of it.
    SpawnRequest pkexec{"pkexec", {"--disable-internal-agent", program.string()}, {"LC_ALL=C"}};
    if (const char* const path = std::getenv("PATH")) // NOLINT(concurrency-mt-unsafe): nothing sets it
        pkexec.environment.push_back(std::string("PATH=") + path);
    pkexec.input = theirs.get();
    pkexec.errors = theirErrors.get();
    return spawn(pkexec, process_);
}

void PkexecChild::awaitProgram() {
    std::array<pollfd, 2> events{{{socket_.get(), POLLIN, 0}, {errors_.get(), POLLIN, 0}}};
    while (events[0].revents == 0) {
        if (::poll(events.data(), events.size(), -1) < 0) {
            if (errno != EINTR)
                return;
            continue;
        }
        if (events[1].revents != 0 && !readComplaint())
            events[1].fd = -1;
    }
}

std::int32_t PkexecChild::end() {
    socket_.close();
    if (process_ <= 0)
        return -1;
    const FileDescriptor exit = exitDescriptor(process_);
    pollfd ended{exit.get(), POLLIN, 0};
    const bool late = ::poll(&ended, 1, kToEndMilliseconds) == 0;
    const pid_t process = std::exchange(process_, 0);
    if (late && ::kill(process, SIGKILL) != 0)
        return -1;
    const auto status = waitForExit(process);
    while (readComplaint()) {
    }
    return status;
}

/// False when there is nothing to be read.
bool PkexecChild::readComplaint() {
    std::array<char, 1024> chunk{};
    const auto count = ::read(errors_.get(), chunk.data(), chunk.size());
    if (count <= 0)
        return count < 0 && errno == EINTR;
    if (complaint_.size() < kLongestComplaint)
        complaint_.append(chunk.data(), static_cast<std::size_t>(count));
    return true;
}

} // namespace velto
