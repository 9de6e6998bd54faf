// Whole files over plain descriptors: flags, modes and flushing matter here.
#include "VeltoApp/history/HistoryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace velto::HistoryFile {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnerOnly = 0600;

class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    bool close() {
        const int fd = std::exchange(fd_, -1);
        return fd < 0 || ::close(fd) == 0;
    }

  private:
    int fd_;
};

bool writeAll(int fd, std::string_view content) {
    while (!content.empty()) {
        const auto written = ::write(fd, content.data(), content.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool replaceByRename(const fs::path& file, std::string_view content) {
    struct stat status {};
    const bool exists = ::stat(file.c_str(), &status) == 0;
    const fs::path fresh = file.parent_path() / ("." + file.filename().string() + ".new");
    Descriptor out(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
    if (!out)
        return false;
    const bool written = ::fchmod(out.get(), exists ? status.st_mode & 07777u : kOwnerOnly) == 0 &&
                         writeAll(out.get(), content) && ::fsync(out.get()) == 0;
    if (out.close() && written && ::rename(fresh.c_str(), file.c_str()) == 0)
        return true;
    ::unlink(fresh.c_str());
    return false;
}

bool replaceInPlace(const fs::path& file, std::string_view content) {
    Descriptor out(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, kOwnerOnly));
    return out && writeAll(out.get(), content) && out.close();
}

} // namespace

std::optional<std::string> read(const fs::path& file) {
    const Descriptor in(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!in || ::fstat(in.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    std::string content;
    std::array<char, 65'536> chunk{};
    for (;;) {
        const auto count = ::read(in.get(), chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return content;
        content.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

bool replace(const fs::path& file, std::string_view content) {
    std::error_code error;
    const bool isLink = fs::is_symlink(fs::symlink_status(file, error));
    const auto target = isLink ? fs::weakly_canonical(file, error) : file;
    if (isLink && error)
        return false;
    // A full disk must not cost the old content, so writing in place is for folders that take no new file.
    if (replaceByRename(target, content))
        return true;
    return ::access(target.parent_path().c_str(), W_OK) != 0 && replaceInPlace(target, content);
}

} // namespace velto::HistoryFile
