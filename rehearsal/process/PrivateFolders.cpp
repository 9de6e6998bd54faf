#include "rehearsal/process/PrivateFolders.h"

#include <array>
#include <cstdlib>
#include <utility>

namespace velto::rehearsal {
namespace {

constexpr std::array<std::pair<const char*, const char*>, 7> kFolders{{{"HOME", "home"},
                                                                       {"XDG_DATA_HOME", "data"},
                                                                       {"XDG_STATE_HOME", "state"},
                                                                       {"XDG_CONFIG_HOME", "config"},
                                                                       {"XDG_CACHE_HOME", "cache"},
                                                                       {"XDG_RUNTIME_DIR", "run"},
                                                                       {"TMPDIR", "tmp"}}};
/// What a program may see of the user's own environment.
constexpr std::array kPassedOn{"PATH",         "LANG",         "LC_ALL",       "TZ",
                               "ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"};

} // namespace

std::optional<Environment> makePrivateFolders(const std::filesystem::path& folder) {
    Environment environment{{"DBUS_SESSION_BUS_ADDRESS", "disabled:"}};
    std::error_code error;
    for (const auto& [variable, name] : kFolders) {
        std::filesystem::create_directories(folder / name, error);
        std::filesystem::permissions(folder / name, std::filesystem::perms::owner_all, error);
        if (error)
            return {};
        environment[variable] = folder / name;
    }
    for (const auto* name : kPassedOn)
        if (const char* const value = std::getenv(name)) // NOLINT(concurrency-mt-unsafe)
            environment.emplace(name, value);
    return environment;
}

} // namespace velto::rehearsal
