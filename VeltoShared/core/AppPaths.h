// Every folder and file that the application owns on disk. Computed anew on each call, from the platform's
// folders; `support`, `logs` and `recordings` are created, with missing parents, by each call that names them
// or a file in them. A folder that cannot be created shows where a file in it is opened. Any thread.
#pragma once

#include <filesystem>
#include <string_view>

namespace velto::AppPaths {

inline constexpr std::string_view bundleID = "org.velto.Velto";

/// The bundle's resource folder, or the folder that holds the executable.
std::filesystem::path resources();
std::filesystem::path drivers();
std::filesystem::path support();
std::filesystem::path logs();
std::filesystem::path logFile();
std::filesystem::path recordings();
std::filesystem::path historyFile();
std::filesystem::path controlSocket();
/// The same paths for those who only look: no folder is left behind.
std::filesystem::path supportToReach();
std::filesystem::path logsToReach();
std::filesystem::path logFileToReach();
std::filesystem::path historyFileToReach();
std::filesystem::path controlSocketToReach();

} // namespace velto::AppPaths
