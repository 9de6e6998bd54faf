// One program of a rehearsal: started so that it cannot outlive its parent, and heard line by line.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velto::rehearsal {

struct ChildProgram {
    std::string title;                              ///< for people: "the voice server"
    std::vector<std::string> arguments;             ///< the first is the program's path
    std::map<std::string, std::string> environment; ///< all of it
    std::filesystem::path errorFile;                ///< gets its standard error
};

/// Runs in a process group of its own, so that Ctrl-C reaches the director alone; dies with the thread that
/// started it. One thread.
class ChildProcess {
  public:
    /// None when the process cannot be made. A program that cannot be executed ends with code 127.
    static std::optional<ChildProcess> start(const ChildProgram& program);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess(); ///< kills it

    const std::string& title() const { return title_; }
    pid_t pid() const { return pid_; }
    /// Readable when it has written, and at its end; −1 once that has been read.
    int output() const { return output_; }
    /// Readable once it has ended.
    int exitDescriptor() const { return exitDescriptor_; }

    /// Whole lines that have arrived since.
    std::vector<std::string> readLines();
    /// As from waitpid, once it has ended; reaps it.
    std::optional<int> exitStatus();
    void signal(int number) const;

  private:
    ChildProcess(std::string title, pid_t pid, int output, int exitDescriptor);

    std::string title_;
    pid_t pid_;
    int output_;
    int exitDescriptor_;
    std::string buffer_;
    std::optional<int> status_;
};

} // namespace velto::rehearsal
