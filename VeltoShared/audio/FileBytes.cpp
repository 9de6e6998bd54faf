#include "VeltoShared/audio/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace velto {
namespace {

constexpr std::size_t kWindow = std::size_t{128} << 10;

} // namespace

FileBytes::FileBytes(const std::filesystem::path& path)
    // A pipe without a writer must not hold up anybody.
    : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat status {};
    if (file_ && ::fstat(file_.get(), &status) == 0 && S_ISREG(status.st_mode))
        size_ = static_cast<std::uint64_t>(status.st_size);
}

std::span<const std::byte> FileBytes::bytes(std::uint64_t offset, std::size_t count) {
    if (offset >= size_)
        return {};
    count = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - offset));
    if (offset < begin_ || offset + count > begin_ + filled_)
        fill(offset, count);
    const auto skipped = static_cast<std::size_t>(offset - begin_);
    return std::span<const std::byte>(window_).subspan(skipped, std::min(count, filled_ - skipped));
}

void FileBytes::fill(std::uint64_t offset, std::size_t count) {
    window_.resize(std::max({count, window_.size(), kWindow}));
    begin_ = offset;
    filled_ = 0;
    // Until enough is there: the file may have become shorter.
    while (filled_ < count) {
        const auto got = ::pread(file_.get(), window_.data() + filled_, window_.size() - filled_,
                                 static_cast<off_t>(begin_ + filled_));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return;
        filled_ += static_cast<std::size_t>(got);
    }
}

} // namespace velto
