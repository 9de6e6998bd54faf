#include "VeltoPlatform/linux/LinuxDriverPlace.h"

#include "VeltoPlatform/ShellWord.h"
#include "VeltoPlatform/linux/DriverVerbs.h"

namespace velto {

DriverVerbs LinuxDriverPlace::verbs() {
    const auto assigned = [](const char* name, const std::filesystem::path& path) {
        return std::string(name) + "=" + shellWord(path.native()) + "\n";
    };
    return {assigned("drivers", folder()) + assigned("pulse", root_ / "etc/pulse/default.pa.d") +
                assigned("pipewire", root_ / "etc/pipewire/pipewire.conf.d") +
                assigned("runtime", root_ / "run/user") + assigned("lock", root_ / "run/velto-drivers.lock") +
                kDriverVerbs,
            "velto_make_folder",
            "velto_copy",
            "velto_publish",
            "velto_remove",
            "velto_restart_sound"};
}

} // namespace velto
