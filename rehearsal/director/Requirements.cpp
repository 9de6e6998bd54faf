#include "rehearsal/director/Requirements.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <vector>

namespace velto::rehearsal {
namespace {

struct Requirement {
    std::string program; ///< on PATH, or absolute
    std::string package;
};

std::vector<Requirement> soundPrograms(SoundServerKind sound) {
    if (sound == SoundServerKind::pulseAudio)
        return {{"pulseaudio", "pulseaudio"}};
    return {{"pipewire", "pipewire"}, {"wireplumber", "wireplumber"}, {"pipewire-pulse", "pipewire-pulse"}};
}

std::vector<Requirement> requirements(SoundServerKind sound) {
    std::vector<Requirement> all{{"Xvfb", "xvfb"},
                                 {"dbus-daemon", "dbus-daemon"},
                                 {"/usr/libexec/at-spi-bus-launcher", "at-spi2-core"},
                                 {"gnome-keyring-daemon", "gnome-keyring"}};
    std::ranges::move(soundPrograms(sound), std::back_inserter(all));
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

SoundServerKind installedSoundServer() {
    const auto has = [](SoundServerKind kind) {
        return std::ranges::all_of(soundPrograms(kind), isThere, &Requirement::program);
    };
    return !has(SoundServerKind::pulseAudio) && has(SoundServerKind::pipeWire) ? SoundServerKind::pipeWire
                                                                               : SoundServerKind::pulseAudio;
}

} // namespace velto::rehearsal
