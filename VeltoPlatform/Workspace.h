// The operating system's workspace: running applications and what opens a URL.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velto {

struct RunningApplication {
    std::string bundleID; ///< empty when it has none
    pid_t pid = 0;
};

/// A program, by its path, and what it is given.
struct Command {
    std::string program;
    std::vector<std::string> arguments;
};

/// All operations: any thread, synchronous.
class Workspace {
  public:
    virtual ~Workspace() = default;

    /// In the platform's order.
    virtual std::vector<RunningApplication> runningApplications() = 0;
    /// Opens the URL with its registered application; false when there is none.
    virtual bool openURL(const std::string& url) = 0;
    /// The program that would open URLs of this scheme: its path, or its name where it is not there; none
    /// when there is no handler. Starts nothing.
    virtual std::optional<std::string> handlerOf(const std::string& scheme) = 0;
    /// Shows the file or folder in the file manager, at least its folder; false when nothing can.
    virtual bool revealFile(const std::filesystem::path& path) = 0;
    /// What shows the desktop's page of accessibility settings, and ends when that is on its way; none where
    /// the desktop has no such page.
    virtual std::optional<Command> accessibilitySettings() = 0;
};

} // namespace velto
