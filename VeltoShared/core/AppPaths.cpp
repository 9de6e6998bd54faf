#include "VeltoShared/core/AppPaths.h"

#include "VeltoPlatform/Folders.h"
#include "VeltoPlatform/Platform.h"

namespace velto::AppPaths {
namespace {

namespace fs = std::filesystem;

constexpr const char* kControlSocket = "control.sock";
constexpr const char* kLog = "velto.log";
constexpr const char* kHistory = "history.json";

fs::path created(const fs::path& folder) {
    std::error_code ignored;
    fs::create_directories(folder, ignored);
    return folder;
}

} // namespace

fs::path resources() {
    auto& folders = *platform().folders;
    std::error_code ignored;
    if (const auto bundle = folders.bundleResources())
        return fs::absolute(*bundle, ignored);
    return fs::absolute(folders.executable(), ignored).parent_path();
}

fs::path drivers() {
    return resources() / "Drivers";
}
fs::path supportToReach() {
    return platform().folders->applicationSupport() / bundleID;
}
fs::path logsToReach() {
    return platform().folders->logs() / "Velto";
}
fs::path support() {
    return created(supportToReach());
}
fs::path logs() {
    return created(logsToReach());
}
fs::path logFile() {
    return logs() / kLog;
}
fs::path logFileToReach() {
    return logsToReach() / kLog;
}
fs::path recordings() {
    return created(support() / "Recordings");
}
fs::path historyFile() {
    return support() / kHistory;
}
fs::path historyFileToReach() {
    return supportToReach() / kHistory;
}
fs::path controlSocket() {
    return support() / kControlSocket;
}
fs::path controlSocketToReach() {
    return supportToReach() / kControlSocket;
}

} // namespace velto::AppPaths
