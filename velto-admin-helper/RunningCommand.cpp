#include "velto-admin-helper/RunningCommand.h"

#include "VeltoPlatform/Spawn.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

namespace velto {
namespace {

constexpr int kGraceMilliseconds = 2000;

std::error_code lastError() {
    return {errno, std::system_category()};
}

} // namespace

std::error_code RunningCommand::start(const std::string& line, const std::string& user) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return lastError();
    output_ = FileDescriptor(ends[0]);
    const FileDescriptor writing(ends[1]);
    // The reading end alone: programs do not expect a standard output that refuses what it cannot take yet.
    if (::fcntl(output_.get(), F_SETFL, O_NONBLOCK) != 0)
        return lastError();
    SpawnRequest shell{"/bin/sh", {"-c", line}, {}};
    shell.environment = {"PATH=/usr/sbin:/usr/bin:/sbin:/bin",
                         "HOME=/root",
                         "SHELL=/bin/sh",
                         "USER=root",
                         "LOGNAME=root",
                         "LC_ALL=C.UTF-8",
                         "PKEXEC_UID=" + user};
    shell.folder = "/";
    shell.output = writing.get();
    shell.errors = writing.get();
    shell.ownSession = true;
    if (const auto error = spawn(shell, shell_))
        return error;
    exit_ = velto::exitDescriptor(shell_);
    return exit_ ? std::error_code() : lastError();
}

RunningCommand::~RunningCommand() {
    if (shell_ <= 0)
        return;
    ::kill(-shell_, SIGTERM);
    pollfd end{exit_.get(), POLLIN, 0};
    ::poll(&end, 1, kGraceMilliseconds);
    ::kill(-shell_, SIGKILL);
    waitForExit(shell_);
}

std::string RunningCommand::read(std::size_t limit) {
    if (!output_)
        return {};
    std::string bytes(ended_ ? std::min(limit, left_) : limit, '\0');
    const auto count = bytes.empty() ? 0 : ::read(output_.get(), bytes.data(), bytes.size());
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
        output_.close();
        left_ = 0;
    }
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    left_ -= std::min(left_, bytes.size());
    return bytes;
}

void RunningCommand::ended() {
    if (std::exchange(ended_, true))
        return;
    int waiting = 0;
    if (output_ && ::ioctl(output_.get(), FIONREAD, &waiting) == 0 && waiting > 0)
        left_ = static_cast<std::size_t>(waiting);
}

std::int32_t RunningCommand::wait() {
    return waitForExit(std::exchange(shell_, 0));
}

} // namespace velto
