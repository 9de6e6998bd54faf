// This desktop's running applications.
#pragma once

#include "VeltoPlatform/Workspace.h"
#include "VeltoPlatform/linux/AtspiAccessibility.h"

#include <functional>
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
    using OpenURL = std::function<bool(const std::string&)>;

    /// The phone app and its banner, which is our notification centre, are one program.
    static std::vector<KnownApplication> defaultTable();

    explicit LinuxWorkspace(AtspiAccessibility& accessibility, OpenURL openURL = {},
                            std::vector<KnownApplication> table = defaultTable());

    std::vector<RunningApplication> runningApplications() override;
    /// What the constructor got; false without.
    bool openURL(const std::string& url) override;

  private:
    const KnownApplication* known(const std::string& executable) const;

    AtspiAccessibility& accessibility_;
    const OpenURL openURL_;
    const std::vector<KnownApplication> table_;
};

} // namespace velto
