// The operating system's workspace: running applications and what opens a URL.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace velto {

struct RunningApplication {
    std::string bundleID; ///< empty when it has none
    pid_t pid = 0;
};

/// All operations: any thread, synchronous.
class Workspace {
  public:
    virtual ~Workspace() = default;

    /// In the platform's order.
    virtual std::vector<RunningApplication> runningApplications() = 0;
    /// Opens the URL with its registered application; false when there is none.
    virtual bool openURL(const std::string& url) = 0;
    /// Shows the file or folder in the file manager, at least its folder; false when nothing can.
    virtual bool revealFile(const std::filesystem::path& path) = 0;
};

} // namespace velto
