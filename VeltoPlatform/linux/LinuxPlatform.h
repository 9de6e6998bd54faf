// This operating system, whole: what a program's composition root builds and keeps.
#pragma once

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxDriverPlace.h"
#include "VeltoPlatform/linux/LinuxFolders.h"
#include "VeltoPlatform/linux/LinuxPreferences.h"
#include "VeltoPlatform/linux/LinuxSecretStore.h"
#include "VeltoPlatform/linux/LinuxWorkspace.h"
#include "VeltoPlatform/linux/PolkitAdmin.h"
#include "VeltoPlatform/linux/PulseHardware.h"
#include "VeltoPlatform/linux/PulseMicrophone.h"
#include "VeltoPlatform/linux/PulseTaps.h"
#include "VeltoPlatform/linux/PulseUnits.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace velto {

/// Installs itself as the process's platform, folders and preferences before sound, so that `report` may
/// write the log from the first moment. `report` gets one finished line a trouble, on any thread.
class LinuxPlatform {
  public:
    using Report = std::function<void(const std::string&)>;

    /// `executable`: the first command-line argument. `bundleID` names the folder of the preferences file.
    LinuxPlatform(std::string executable, std::string_view bundleID, const Report& report);
    ~LinuxPlatform();
    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

  private:
    LinuxFolders folders_;
    LinuxDriverPlace driverPlace_;
    LinuxPreferences preferences_;
    LinuxSecretStore secrets_;
    AtspiAccessibility accessibility_;
    LinuxWorkspace workspace_{accessibility_};
    PolkitAdmin admin_;
    std::shared_ptr<PulseTaps> taps_;
    std::unique_ptr<PulseHardware> hardware_;
    std::unique_ptr<PulseUnits> units_;
    std::unique_ptr<PulseMicrophone> microphone_;
};

} // namespace velto
