// Whole files as texts.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto::rehearsal {

/// None when it cannot be read.
std::optional<std::string> readFile(const std::filesystem::path& path);
/// Makes or empties a file that only its owner can read; none when that fails, `errno` says why. What is no
/// file, a terminal for example, keeps its mode.
FileDescriptor openPrivateFile(const std::filesystem::path& path);
/// The same and writes the text; false when that fails.
bool writePrivateFile(const std::filesystem::path& path, std::string_view text);

} // namespace velto::rehearsal
