// A POSIX file descriptor that closes itself, and whole reads and writes through one.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velto {

/// Owns what it is given; a negative number is no descriptor.
class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    /// False when the system reports a failure, such as a late write error. Safe to call again.
    bool close();

  private:
    int fd_;
};

/// All bytes up to the end of the file; none on an error. Interruptions by signals are no errors.
std::optional<std::string> readAll(int fd);
/// False on an error, `errno` says which; some of the bytes may have been written then.
bool writeAll(int fd, std::string_view bytes);

} // namespace velto
