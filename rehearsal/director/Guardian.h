// Keeps a rehearsal from leaving anything behind: two processes that watch each other, and a private folder.
#pragma once

#include <filesystem>
#include <functional>

namespace velto::rehearsal {

/// The calling process makes a private folder under /tmp and forks; the child runs `direct` and ends with its
/// answer. When the child ends, whichever way, this process kills every process that descends from it,
/// removes the folder and answers the exit code (1 when the child was killed, which is said on standard
/// error). SIGINT, SIGTERM and SIGHUP are passed on to the child, which has 1.5 s to end. They are blocked in
/// both.
///
/// When the calling process itself is killed, the child must end everything: it calls
/// `GuardianLink::cleanUp`.
class GuardianLink {
  public:
    GuardianLink(std::filesystem::path folder, int lifeline, bool keepFolder = false)
        : folder_(std::move(folder)), lifeline_(lifeline), keepFolder_(keepFolder) {}

    const std::filesystem::path& folder() const { return folder_; }
    /// Readable (end of file) once the guardian is gone.
    int lifeline() const { return lifeline_; }
    /// Does what the guardian would have done.
    void cleanUp() const;

  private:
    std::filesystem::path folder_;
    int lifeline_;
    bool keepFolder_;
};

struct GuardianOptions {
    bool keepFolder = false;
};

/// Single-threaded callers only. Answers in the calling process.
int runGuarded(const GuardianOptions& options, const std::function<int(const GuardianLink&)>& direct);

/// Kills and reaps every child of this process, and what it inherits from them, for at most two seconds.
void endDescendants();

/// "killed (SIGKILL)" or "ended with exit code 3"; `status` as from waitpid.
std::string describeExit(int status);

} // namespace velto::rehearsal
