// Where the operating system keeps an application's files.
#pragma once

#include <filesystem>
#include <optional>

namespace velto {

/// All operations: any thread. Nothing is created here.
class Folders {
  public:
    virtual ~Folders() = default;

    /// The user's folder of application data; the application adds a folder of its own.
    virtual std::filesystem::path applicationSupport() = 0;
    /// The user's folder of log files; the application adds a folder of its own.
    virtual std::filesystem::path logs() = 0;
    /// The resource folder of the application's bundle; none when the bundle reports none.
    virtual std::optional<std::filesystem::path> bundleResources() = 0;
    /// The program as it was started: the first command-line argument.
    virtual std::filesystem::path executable() = 0;
};

} // namespace velto
