// Reading and replacing the history's file as a whole.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto::HistoryFile {

/// The whole content; none unless it is a regular file that can be read to its end.
std::optional<std::string> read(const std::filesystem::path& file);

/// Replaces the content: through a new file and a rename, or in place where no new file can be made. False
/// when neither could be done.
bool replace(const std::filesystem::path& file, std::string_view content);

} // namespace velto::HistoryFile
