// Folders of the XDG base directory standard. Variables that are unset, empty or relative count as unset.
#pragma once

#include "VeltoPlatform/Folders.h"

namespace velto {

/// Data in $XDG_DATA_HOME (~/.local/share), logs in $XDG_STATE_HOME (~/.local/state). The home folder is
/// $HOME, else the user's entry in the password database.
class LinuxFolders : public Folders {
  public:
    /// `executable`: the program's first command-line argument.
    explicit LinuxFolders(std::filesystem::path executable) : executable_(std::move(executable)) {}

    std::filesystem::path applicationSupport() override;
    std::filesystem::path logs() override;
    /// Of the build, the installation or the bundle that the running program belongs to.
    std::optional<std::filesystem::path> bundleResources() override;
    std::filesystem::path executable() override { return executable_; }

    /// $XDG_CONFIG_HOME (~/.config).
    static std::filesystem::path config();

  private:
    std::filesystem::path executable_;
};

} // namespace velto
