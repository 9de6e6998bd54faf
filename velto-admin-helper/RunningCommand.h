// A shell that runs one command line, and what it writes.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <system_error>

namespace velto {

/// "/bin/sh" "-c" with a line, in a session of its own, with a small environment, nothing on its standard
/// input, and one pipe for both its outputs. One thread.
class RunningCommand {
  public:
    /// `user`: the number of the user who asked, which the command finds as "PKEXEC_UID".
    std::error_code start(const std::string& line, const std::string& user);
    RunningCommand() = default;
    ~RunningCommand(); ///< ends it with all of its process group: asks, and kills after 2 s
    RunningCommand(const RunningCommand&) = delete;
    RunningCommand& operator=(const RunningCommand&) = delete;

    /// To be polled: what it writes, and its end; −1 once there is nothing more to see.
    int output() const { return output_.get(); }
    int exitDescriptor() const { return ended_ ? -1 : exit_.get(); }

    /// What has been written, up to `limit` bytes, without waiting; empty when there is nothing.
    std::string read(std::size_t limit);
    /// Its end has been seen: from here on `read` answers what it had written by then, and nothing of what
    /// programs that it left behind go on to write.
    void ended();
    /// After `ended`: everything has been read.
    bool drained() const { return ended_ && left_ == 0; }
    /// Waits for its end, and reaps it.
    std::int32_t wait();

  private:
    pid_t shell_ = 0;
    FileDescriptor output_;
    FileDescriptor exit_;
    bool ended_ = false;
    std::size_t left_ = 0;
};

} // namespace velto
