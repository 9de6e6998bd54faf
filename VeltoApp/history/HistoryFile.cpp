// Whole files over plain descriptors: flags, modes and flushing matter here.
#include "VeltoApp/history/HistoryFile.h"

#include "VeltoPlatform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velto::HistoryFile {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnerOnly = 0600;

bool replaceByRename(const fs::path& file, std::string_view content) {
    struct stat status {};
    const bool exists = ::stat(file.c_str(), &status) == 0;
    const fs::path fresh = file.parent_path() / ("." + file.filename().string() + ".new");
    FileDescriptor out(
        ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
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
    FileDescriptor out(
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, kOwnerOnly));
    return out && writeAll(out.get(), content) && out.close();
}

} // namespace

std::optional<std::string> read(const fs::path& file) {
    const FileDescriptor in(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!in || ::fstat(in.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return readAll(in.get());
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
