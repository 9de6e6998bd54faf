// One program of a rehearsal.
#include "rehearsal/process/ChildProcess.h"

#include "VeltoPlatform/Spawn.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace velto::rehearsal {
namespace {

FileDescriptor openForAppending(const std::filesystem::path& file) {
    return FileDescriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
}

/// Readable from its begin; no descriptor when it cannot be made.
FileDescriptor fileWith(const std::string& content) {
    FileDescriptor file(::memfd_create("input", MFD_CLOEXEC));
    if (!file || !writeAll(file.get(), content) || ::lseek(file.get(), 0, SEEK_SET) != 0)
        return FileDescriptor();
    return file;
}

struct Ends {
    int input;
    int output;
    int errors;
};

/// Between fork and exec: nothing here may allocate or lock.
[[noreturn]] void become(char* const* arguments, char* const* environment, pid_t parent, Ends ends) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(127);
    // Out of the terminal's group: Ctrl-C is for the parent, which then ends its children in its own order.
    ::setpgid(0, 0);
    // What is ignored here would be ignored there, and a program that is asked to end would not.
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGCHLD})
        ::signal(number, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
    ::dup2(ends.input >= 0 ? ends.input : ::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::dup2(ends.output, STDOUT_FILENO);
    if (ends.errors >= 0)
        ::dup2(ends.errors, STDERR_FILENO);
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    ::execvpe(arguments[0], arguments, environment);
    ::_exit(127);
}

} // namespace

std::optional<ChildProcess> ChildProcess::start(const ChildProgram& program) {
    auto arguments = program.arguments;
    std::vector<std::string> environment;
    environment.reserve(program.environment.size());
    for (const auto& [name, value] : program.environment)
        environment.emplace_back(name).append("=").append(value);
    const auto argumentPointers = nullTerminated(arguments);
    const auto environmentPointers = nullTerminated(environment);
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
    if (program.outputFile.empty()) {
        std::array<int, 2> ends{-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            return {};
        readEnd = FileDescriptor(ends[0]);
        writeEnd = FileDescriptor(ends[1]);
    } else {
        writeEnd = openForAppending(program.outputFile);
    }
    const FileDescriptor errors =
        program.errorFile.empty() ? FileDescriptor() : openForAppending(program.errorFile);
    const FileDescriptor input = program.input.empty() ? FileDescriptor() : fileWith(program.input);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid == 0)
        become(argumentPointers.data(), environmentPointers.data(), parent,
               {input.get(), writeEnd.get(), errors.get()});
    if (pid < 0)
        return {};
    FileDescriptor exitDescriptor = velto::exitDescriptor(pid);
    if (!exitDescriptor) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
        return {};
    }
    return ChildProcess(program.title, pid, std::move(readEnd), std::move(exitDescriptor));
}

ChildProcess::ChildProcess(std::string title, pid_t pid, FileDescriptor output, FileDescriptor exitDescriptor)
    : title_(std::move(title)), pid_(pid), output_(std::move(output)),
      exitDescriptor_(std::move(exitDescriptor)) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : title_(std::move(other.title_)), pid_(std::exchange(other.pid_, 0)), output_(std::move(other.output_)),
      exitDescriptor_(std::move(other.exitDescriptor_)), status_(other.status_) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    // What this was dies with the other.
    std::swap(title_, other.title_);
    std::swap(pid_, other.pid_);
    std::swap(output_, other.output_);
    std::swap(exitDescriptor_, other.exitDescriptor_);
    std::swap(status_, other.status_);
    return *this;
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0 && !status_) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
}

std::optional<int> ChildProcess::exitStatus() {
    if (status_ || pid_ <= 0)
        return status_;
    int status = 0;
    const pid_t ended = ::waitpid(pid_, &status, WNOHANG);
    if (ended == pid_)
        status_ = status;
    else if (ended < 0 && errno == ECHILD)
        status_ = W_EXITCODE(255, 0);
    return status_;
}

bool ChildProcess::endsWithin(std::chrono::milliseconds limit) {
    pollfd ended{exitDescriptor_.get(), POLLIN, 0};
    if (!exitStatus())
        ::poll(&ended, 1, static_cast<int>(limit.count()));
    return exitStatus().has_value();
}

void ChildProcess::kill() {
    signal(SIGKILL);
    while (!endsWithin(std::chrono::milliseconds(100))) {
    }
}

void ChildProcess::stop() {
    signal(SIGTERM);
    // One that was stopped with SIGSTOP ends only when it goes on.
    signal(SIGCONT);
    if (!endsWithin(std::chrono::seconds(1)))
        kill();
}

void ChildProcess::signal(int number) const {
    if (pid_ > 0 && !status_)
        ::kill(pid_, number);
}

} // namespace velto::rehearsal
