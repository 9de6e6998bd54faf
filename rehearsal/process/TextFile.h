// Whole files as texts.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto::rehearsal {

/// None when it cannot be read.
std::optional<std::string> readFile(const std::filesystem::path& path);
/// Makes or replaces a file that only its owner can read; false when that fails.
bool writePrivateFile(const std::filesystem::path& path, std::string_view text);

} // namespace velto::rehearsal
