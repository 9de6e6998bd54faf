#include "VeltoPlatform/Spawn.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace velto {
namespace {

std::error_code systemError(int number) {
    return {number, std::system_category()};
}

class Actions {
  public:
    Actions() { ::posix_spawn_file_actions_init(&actions_); }
    ~Actions() { ::posix_spawn_file_actions_destroy(&actions_); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;

    /// An error number; 0 is success.
    int redirect(const std::array<int, 3>& descriptors) {
        for (int target = 0; target < 3; ++target) {
            const int source = descriptors.at(static_cast<std::size_t>(target));
            if (source < 0) {
                const int mode = target == STDIN_FILENO ? O_RDONLY : O_WRONLY;
                if (const int error =
                        ::posix_spawn_file_actions_addopen(&actions_, target, "/dev/null", mode, 0))
                    return error;
                continue;
            }
            // Above those three, of which an earlier redirection may have taken its place.
            auto& copy = copies_.at(static_cast<std::size_t>(target));
            copy = FileDescriptor(::fcntl(source, F_DUPFD_CLOEXEC, 3));
            if (!copy)
                return errno;
            if (const int error = ::posix_spawn_file_actions_adddup2(&actions_, copy.get(), target))
                return error;
        }
        return ::posix_spawn_file_actions_addclosefrom_np(&actions_, 3);
    }
    int enter(const std::string& folder) {
        return folder.empty() ? 0 : ::posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str());
    }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
    std::array<FileDescriptor, 3> copies_;
};

class Attributes {
  public:
    explicit Attributes(bool ownSession) {
        ::posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        if (ownSession)
            flags |= POSIX_SPAWN_SETSID;
        ::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }
    ~Attributes() { ::posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

} // namespace

std::error_code spawn(const SpawnRequest& request, pid_t& child) {
    Actions actions;
    if (const int error = actions.redirect({request.input, request.output, request.errors}))
        return systemError(error);
    if (const int error = actions.enter(request.folder))
        return systemError(error);
    const Attributes attributes(request.ownSession);
    std::vector<std::string> words{request.program};
    words.insert(words.end(), request.arguments.begin(), request.arguments.end());
    auto variables = request.environment;
    return systemError(::posix_spawnp(&child, request.program.c_str(), actions.get(), attributes.get(),
                                      nullTerminated(words).data(), nullTerminated(variables).data()));
}

std::vector<char*> nullTerminated(std::vector<std::string>& texts) {
    std::vector<char*> all;
    all.reserve(texts.size() + 1);
    for (auto& text : texts)
        all.push_back(text.data());
    all.push_back(nullptr);
    return all;
}

FileDescriptor exitDescriptor(pid_t process) {
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

std::int32_t waitForExit(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) != child)
        if (errno != EINTR)
            return -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace velto
