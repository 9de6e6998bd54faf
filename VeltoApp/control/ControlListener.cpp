// The socket calls in their order: remove, create, bind, restrict, listen.
#include "VeltoApp/control/ControlListener.h"

#include "VeltoShared/control/ControlAddress.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

namespace velto::ControlListener {
namespace {

constexpr int kBacklog = 16;
constexpr mode_t kOwnerOnly = 0600;
constexpr rlim_t kDescriptors = 16'384;

/// A path that was cut names another file; only a socket can be a leftover of ours there.
void removeLeftover(const std::filesystem::path& path, const ControlAddress& address) {
    ::unlink(path.c_str());
    struct stat status {};
    if (path.native() != address.path() && ::lstat(address.path(), &status) == 0 && S_ISSOCK(status.st_mode))
        ::unlink(address.path());
}

Failure failed(int fd, std::string_view what) {
    const int error = errno;
    ::close(fd);
    return {error, "control: " + std::string(what) + " failed errno=" + std::to_string(error)};
}

} // namespace

Result<int> open(const std::filesystem::path& path) {
    const ControlAddress address(path);
    removeLeftover(path, address);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return Failure{errno, "control: socket() failed"};
    // On Linux the file is created with the mode of the unbound socket; the second step is for other systems.
    ::fchmod(fd, kOwnerOnly);
    if (::bind(fd, address.get(), ControlAddress::kLength) != 0)
        return failed(fd, "bind");
    ::chmod(address.path(), kOwnerOnly);
    if (::listen(fd, kBacklog) != 0)
        return failed(fd, "listen");
    return Result<int>(boost::system::in_place_value, fd);
}

std::size_t raiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 256;
    const auto wanted = std::min(limit.rlim_max, kDescriptors);
    if (limit.rlim_cur < wanted) {
        const auto before = limit.rlim_cur;
        limit.rlim_cur = wanted;
        if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
            limit.rlim_cur = before;
    }
    return static_cast<std::size_t>(std::min(limit.rlim_cur, kDescriptors));
}

} // namespace velto::ControlListener
