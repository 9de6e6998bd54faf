// pkexec, and the program that it becomes once the user has agreed.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

namespace velto {

/// One thread at a time.
class PkexecChild {
  public:
    PkexecChild() = default;
    ~PkexecChild() { end(); }
    PkexecChild(const PkexecChild&) = delete;
    PkexecChild& operator=(const PkexecChild&) = delete;

    /// Once. The program's standard input will be the other end of `socket`, which keeps messages apart.
    std::error_code start(const std::filesystem::path& program);
    int socket() const { return socket_.get(); }
    /// Waits, while the user is being asked, until the program has sent something or has ended.
    void awaitProgram();
    /// Hangs up and waits for its end: its exit code, 128 + the number of a signal, or −1 when that cannot be
    /// known. One that has not ended by itself after 3 s is killed, or left alone where that is not allowed.
    std::int32_t end();
    /// What pkexec wrote to its standard error, at most the first 4 KiB of it.
    const std::string& complaint() const { return complaint_; }

  private:
    bool readComplaint();

    FileDescriptor socket_;
    FileDescriptor errors_;
    std::string complaint_;
    pid_t process_ = 0;
};

} // namespace velto
