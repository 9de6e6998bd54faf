#include "VeltoPlatform/linux/LinuxFolders.h"

#include "VeltoPlatform/linux/InstallTree.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace velto {
namespace {

namespace fs = std::filesystem;

std::optional<fs::path> absoluteFolder(const char* variable) {
    const char* value =
        std::getenv(variable); // NOLINT(concurrency-mt-unsafe): nothing here sets the environment
    if (!value || *value != '/')
        return std::nullopt;
    return fs::path(value);
}

fs::path home() {
    if (auto folder = absoluteFolder("HOME"))
        return *folder;
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_dir)
        return found->pw_dir;
    return "/";
}

fs::path folder(const char* variable, const char* belowHome) {
    auto chosen = absoluteFolder(variable);
    return chosen ? *chosen : home() / belowHome;
}

} // namespace

fs::path LinuxFolders::applicationSupport() {
    return folder("XDG_DATA_HOME", ".local/share");
}
fs::path LinuxFolders::logs() {
    return folder("XDG_STATE_HOME", ".local/state");
}
fs::path LinuxFolders::config() {
    return folder("XDG_CONFIG_HOME", ".config");
}

std::optional<fs::path> LinuxFolders::bundleResources() {
    std::error_code error;
    auto resources = InstallTree::resources();
    if (!fs::is_directory(resources, error))
        return std::nullopt;
    return resources;
}

} // namespace velto
