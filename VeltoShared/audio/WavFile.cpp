#include "VeltoShared/audio/WavFile.h"

#include "VeltoShared/audio/WavFormat.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <system_error>
#include <utility>

namespace velto {
namespace {

static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");

/// The sizes in the header have 32 bits.
constexpr std::uint32_t kMostFrames = (1U << 31) - 64;

} // namespace

WavFile::WavFile(const std::filesystem::path& path, double rate)
    // A pipe without a reader must not hold up anybody.
    : file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, 0600)), rate_(rate) {
    if (!file_) {
        fail();
        return;
    }
    // One that was there keeps its mode otherwise; nothing but a file is ours to change.
    struct stat status {};
    if (::fstat(file_.get(), &status) == 0 && S_ISREG(status.st_mode))
        ::fchmod(file_.get(), 0600);
    refreshHeader();
}

void WavFile::fail() {
    if (trouble_.empty())
        trouble_ = std::system_category().message(errno);
}

bool WavFile::write(std::span<const std::byte> bytes, std::uint64_t offset) {
    while (!bytes.empty()) {
        const auto written = ::pwrite(file_.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            fail();
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        offset += static_cast<std::uint64_t>(written);
    }
    return true;
}

void WavFile::append(std::span<const std::int16_t> samples) {
    const auto room = kMostFrames - frames_;
    const auto fitting = samples.first(std::min<std::size_t>(room, samples.size()));
    lost_ += samples.size() - fitting.size();
    // At the place of its first sample: what a failed write has left behind is overwritten by the next.
    const bool isWritten =
        file_ && write(std::as_bytes(fitting), WavFormat::headerSize + std::uint64_t{2} * frames_);
    if (isWritten || !file_)
        frames_ += static_cast<std::uint32_t>(fitting.size());
    if (!isWritten)
        lost_ += fitting.size();
}

void WavFile::refreshHeader() {
    if (file_)
        write(WavFormat::header(frames_, rate_), 0);
}

void WavFile::finish() {
    if (!file_)
        return;
    // Half a block that did not fit on a full disk is no sound.
    if (::ftruncate(file_.get(), static_cast<off_t>(WavFormat::headerSize) + off_t{2} * frames_) != 0)
        fail();
    refreshHeader();
    if (struct stat status {}; ::fstat(file_.get(), &status) == 0 && status.st_nlink == 0) {
        trouble_ = "the file was deleted";
        lost_ += std::exchange(frames_, 0);
    }
}

void WavFile::sync() {
    ::fsync(file_.get());
    file_.close();
}

} // namespace velto
