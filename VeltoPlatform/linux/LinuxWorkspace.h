// This desktop's running applications.
#pragma once

#include "VeltoPlatform/Workspace.h"
#include "VeltoPlatform/linux/AtspiAccessibility.h"

#include <string>
#include <vector>

namespace velto {

/// A program that is known by other identifiers than its file's name.
struct KnownApplication {
    std::string executable;
    std::vector<std::string> bundleIDs; ///< it is listed once under each
};

/// Lists what takes part in the accessibility bus, each program once for each identifier; without that bus,
/// the running programs of the table. A program that is not in the table goes by its file's name.
class LinuxWorkspace : public Workspace {
  public:
    /// The phone app and its banner, which is our notification centre, are one program.
    static std::vector<KnownApplication> defaultTable();

    explicit LinuxWorkspace(AtspiAccessibility& accessibility,
                            std::vector<KnownApplication> table = defaultTable());

    std::vector<RunningApplication> runningApplications() override;
    bool openURL(const std::string& url) override;
    std::optional<std::string> handlerOf(const std::string& scheme) override;
    bool revealFile(const std::filesystem::path& path) override;
    std::optional<Command> accessibilitySettings() override;

  private:
    const KnownApplication* known(const std::string& executable) const;

    AtspiAccessibility& accessibility_;
    const std::vector<KnownApplication> table_;
};

} // namespace velto
