// One program of a rehearsal: started so that it cannot outlive its parent, and heard line by line.
#pragma once

#include "rehearsal/process/LineReader.h"

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velto::rehearsal {

struct ChildProgram {
    std::string title;                              ///< for people: "the voice server"
    std::vector<std::string> arguments;             ///< the first is the program: a path, or a name on PATH
    std::map<std::string, std::string> environment; ///< all of it
    std::filesystem::path errorFile;                ///< gets its standard error
    std::filesystem::path outputFile{};             ///< gets its standard output; empty: read it by lines
    std::string input{};                            ///< all that it finds on its standard input
};

/// Runs in a process group of its own, so that Ctrl-C reaches the director alone; dies with the thread that
/// started it. One thread.
class ChildProcess {
  public:
    /// None when the process cannot be made. A program that cannot be executed ends with code 127.
    static std::optional<ChildProcess> start(const ChildProgram& program);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ~ChildProcess(); ///< kills it, if it has not ended

    const std::string& title() const { return title_; }
    pid_t pid() const { return pid_; }
    /// Readable when it has written, and at its end; −1 once that has been read, and with an output file.
    int output() const { return output_.descriptor(); }
    /// Readable once it has ended.
    int exitDescriptor() const { return exitDescriptor_.get(); }

    /// Whole lines that have arrived since.
    std::vector<std::string> readLines() { return output_.readLines(); }
    /// As from waitpid, once it has ended; reaps it. Exit code 255 where SIGCHLD is ignored or somebody else
    /// has reaped it, so that nobody can know how it ended.
    std::optional<int> exitStatus();
    /// Waits for its end; false when the time is over first.
    bool endsWithin(std::chrono::milliseconds limit);
    void signal(int number) const;
    /// SIGKILL, and waits until it is gone.
    void kill();
    /// Asks it to end, kills it after a second.
    void stop();

  private:
    ChildProcess(std::string title, pid_t pid, FileDescriptor output, FileDescriptor exitDescriptor);

    std::string title_;
    pid_t pid_;
    LineReader output_;
    FileDescriptor exitDescriptor_;
    std::optional<int> status_;
};

} // namespace velto::rehearsal
