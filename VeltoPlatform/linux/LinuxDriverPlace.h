// Drivers for PulseAudio and PipeWire: bundles with the configuration that makes a server publish the
// devices.
#pragma once

#include "VeltoPlatform/DriverPlace.h"

namespace velto {

/// Bundles go to /usr/local/share/velto/drivers, and from there their "pulse.pa" to /etc/pulse/default.pa.d
/// and "pipewire.conf" to /etc/pipewire/pipewire.conf.d, named after the bundle. `copy` and `clear` leave
/// either a whole driver or none, `remove` leaves no folder that `makeFolder` or `clear` made. `restart` is
/// about the sound server of the user in PKEXEC_UID, without it of the shell's own.
class LinuxDriverPlace : public DriverPlace {
  public:
    /// `root`: a folder that stands for the system's root.
    explicit LinuxDriverPlace(std::filesystem::path root = "/") : root_(std::move(root)) {}

    std::filesystem::path folder() override { return root_ / "usr/local/share/velto/drivers"; }
    DriverVerbs verbs() override;

  private:
    std::filesystem::path root_;
};

} // namespace velto
