// One program of a rehearsal.
#include "rehearsal/director/ChildProcess.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace velto::rehearsal {
namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    all.reserve(texts.size() + 1);
    for (auto& text : texts)
        all.push_back(text.data());
    all.push_back(nullptr);
    return all;
}

/// Between fork and exec: nothing here may allocate or lock.
[[noreturn]] void become(char* const* arguments, char* const* environment, pid_t parent, int output,
                         int errors) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(127);
    ::setpgid(0, 0);
    sigset_t none;
    ::sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
    ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    if (errors >= 0)
        ::dup2(errors, STDERR_FILENO);
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    ::execve(arguments[0], arguments, environment);
    ::_exit(127);
}

} // namespace

std::optional<ChildProcess> ChildProcess::start(const ChildProgram& program) {
    auto arguments = program.arguments;
    std::vector<std::string> environment;
    environment.reserve(program.environment.size());
    for (const auto& [name, value] : program.environment)
        environment.emplace_back(name).append("=").append(value);
    const auto argumentPointers = pointers(arguments);
    const auto environmentPointers = pointers(environment);
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    const int errors = ::open(program.errorFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid == 0)
        become(argumentPointers.data(), environmentPointers.data(), parent, ends[1], errors);
    ::close(ends[1]);
    if (errors >= 0)
        ::close(errors);
    const int exitDescriptor = pid > 0 ? static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)) : -1;
    if (exitDescriptor < 0) {
        ::close(ends[0]);
        if (pid > 0) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        return {};
    }
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return ChildProcess(program.title, pid, ends[0], exitDescriptor);
}

ChildProcess::ChildProcess(std::string title, pid_t pid, int output, int exitDescriptor)
    : title_(std::move(title)), pid_(pid), output_(output), exitDescriptor_(exitDescriptor) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : title_(std::move(other.title_)), pid_(std::exchange(other.pid_, 0)),
      output_(std::exchange(other.output_, -1)), exitDescriptor_(std::exchange(other.exitDescriptor_, -1)),
      buffer_(std::move(other.buffer_)), status_(other.status_) {}

ChildProcess::~ChildProcess() {
    if (pid_ > 0 && !status_) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    if (output_ >= 0)
        ::close(output_);
    if (exitDescriptor_ >= 0)
        ::close(exitDescriptor_);
}

std::vector<std::string> ChildProcess::readLines() {
    std::vector<std::string> lines;
    std::array<char, 16384> bytes{};
    ssize_t count = 0;
    while (output_ >= 0 && (count = ::read(output_, bytes.data(), bytes.size())) > 0)
        buffer_.append(bytes.data(), static_cast<std::size_t>(count));
    if (output_ >= 0 && count == 0)
        ::close(std::exchange(output_, -1));
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = buffer_.find('\n', begin)) != std::string::npos; begin = end + 1)
        lines.push_back(buffer_.substr(begin, end - begin));
    buffer_.erase(0, begin);
    return lines;
}

std::optional<int> ChildProcess::exitStatus() {
    int status = 0;
    if (!status_ && pid_ > 0 && ::waitpid(pid_, &status, WNOHANG) == pid_)
        status_ = status;
    return status_;
}

void ChildProcess::signal(int number) const {
    if (pid_ > 0 && !status_)
        ::kill(pid_, number);
}

} // namespace velto::rehearsal
