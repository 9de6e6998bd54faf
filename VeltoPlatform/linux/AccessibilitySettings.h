// The page of accessibility settings, which every desktop has elsewhere.
#pragma once

#include "VeltoPlatform/Workspace.h"

#include <optional>
#include <string_view>

namespace velto {

/// What shows it: by a program of the first desktop of `desktops` (the form of XDG_CURRENT_DESKTOP) that has
/// one in a folder of `path` (the form of PATH).
std::optional<Command> accessibilitySettings(std::string_view desktops, std::string_view path);

} // namespace velto
