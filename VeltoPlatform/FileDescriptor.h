// A POSIX file descriptor that closes itself, and whole reads and writes through one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace velto {

/// Owns what it is given; a negative number is no descriptor.
class FileDescriptor {
  public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    /// False when the system reports a failure, such as a late write error. Safe to call again.
    bool close();
    /// The caller owns it from here on.
    int release() { return std::exchange(fd_, -1); }

  private:
    int fd_;
};

/// All bytes up to the end of the file; none on an error. Interruptions by signals are no errors.
std::optional<std::string> readAll(int fd);
/// False on an error, `errno` says which; some of the bytes may have been written then.
bool writeAll(int fd, std::string_view bytes);

} // namespace velto
