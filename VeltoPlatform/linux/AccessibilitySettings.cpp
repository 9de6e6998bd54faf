#include "VeltoPlatform/linux/AccessibilitySettings.h"

#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>

namespace velto {
namespace {

struct Page {
    std::string_view desktop;
    std::string_view program;
    std::string_view argument;
};

constexpr std::array kPages{
    Page{"GNOME", "gnome-control-center", "universal-access"},
    Page{"Unity", "unity-control-center", "universal-access"},
    Page{"KDE", "systemsettings", "kcm_access"},
    Page{"KDE", "systemsettings5", "kcm_access"},
    Page{"X-Cinnamon", "cinnamon-settings", "universal-access"},
    Page{"XFCE", "xfce4-accessibility-settings", ""},
    Page{"MATE", "mate-at-properties", ""},
};

/// Calls `use` with each part until it answers something.
template <class Use>
auto firstOf(std::string_view list, Use&& use) -> decltype(use(list)) {
    while (!list.empty()) {
        const auto end = list.find(':');
        const auto part = list.substr(0, end);
        if (auto answer = use(part))
            return answer;
        list.remove_prefix(end == list.npos ? list.size() : end + 1);
    }
    return {};
}

std::optional<std::string> located(std::string_view program, std::string_view path) {
    return firstOf(path, [&](std::string_view folder) -> std::optional<std::string> {
        const auto file = std::filesystem::path(folder) / program;
        if (!file.is_absolute() || ::access(file.c_str(), X_OK) != 0)
            return std::nullopt;
        return file.string();
    });
}

/// Settings windows stay; the command is over when it has started one, and holds none of its ends.
Command started(const std::string& program, std::string_view argument) {
    Command command{"/bin/sh", {"-c", R"("$@" </dev/null >/dev/null 2>&1 &)", "sh", program}};
    if (!argument.empty())
        command.arguments.emplace_back(argument);
    return command;
}

} // namespace

std::optional<Command> accessibilitySettings(std::string_view desktops, std::string_view path) {
    return firstOf(desktops, [&](std::string_view desktop) -> std::optional<Command> {
        for (const auto& page : kPages)
            if (page.desktop == desktop)
                if (const auto program = located(page.program, path))
                    return started(*program, page.argument);
        return std::nullopt;
    });
}

} // namespace velto
