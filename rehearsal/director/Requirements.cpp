#include "rehearsal/director/Requirements.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <vector>

namespace velto::rehearsal {
namespace {

struct Requirement {
    std::string program; ///< on PATH, or absolute
    std::string package;
};

std::vector<Requirement> requirements(SoundServerKind sound) {
    std::vector<Requirement> all{{"Xvfb", "xvfb"},
                                 {"dbus-daemon", "dbus-daemon"},
                                 {"/usr/libexec/at-spi-bus-launcher", "at-spi2-core"},
                                 {"gnome-keyring-daemon", "gnome-keyring"}};
    if (sound == SoundServerKind::pulseAudio)
        all.push_back({"pulseaudio", "pulseaudio"});
    else
        for (const char* name : {"pipewire", "wireplumber", "pipewire-pulse"})
            all.push_back({name, name});
    return all;
}

bool isThere(const std::string& program) {
    if (program.starts_with('/'))
        return ::access(program.c_str(), X_OK) == 0;
    const char* path = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe): one thread so far
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        folder.append("/").append(program);
        if (::access(folder.c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

} // namespace

std::string missingPrograms(SoundServerKind sound) {
    std::string programs;
    std::string packages;
    for (const auto& [program, package] : requirements(sound)) {
        if (isThere(program))
            continue;
        programs += (programs.empty() ? "" : ", ") + program;
        packages += " " + package;
    }
    if (programs.empty())
        return {};
    return "a rehearsal needs what is not installed: " + programs + "\n  apt install" + packages;
}

} // namespace velto::rehearsal
