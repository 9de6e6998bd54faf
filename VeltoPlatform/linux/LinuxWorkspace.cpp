#include "VeltoPlatform/linux/LinuxWorkspace.h"

#include "VeltoPlatform/linux/AccessibilitySettings.h"
#include "VeltoPlatform/linux/OpenURL.h"
#include "VeltoPlatform/linux/ProcessFiles.h"
#include "VeltoPlatform/linux/RevealFile.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace velto {
namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing here sets the environment
    return value ? value : "";
}

} // namespace

std::vector<KnownApplication> LinuxWorkspace::defaultTable() {
    return {{"velto-phone", {"com.apple.mobilephone", "com.apple.notificationcenterui"}}};
}

LinuxWorkspace::LinuxWorkspace(AtspiAccessibility& accessibility, std::vector<KnownApplication> table)
    : accessibility_(accessibility), table_(std::move(table)) {}

std::vector<RunningApplication> LinuxWorkspace::runningApplications() {
    const auto taking = accessibility_.processes();
    std::vector<RunningApplication> running;
    for (const auto pid : taking ? *taking : ProcessFiles::own()) {
        const auto executable = ProcessFiles::executable(pid);
        if (const auto* application = known(executable)) {
            for (const auto& bundleID : application->bundleIDs)
                running.push_back({bundleID, pid});
        } else if (taking && ProcessFiles::exists(pid)) {
            running.push_back({executable, pid});
        }
    }
    return running;
}

bool LinuxWorkspace::openURL(const std::string& url) {
    return velto::openURL(url);
}

std::optional<std::string> LinuxWorkspace::handlerOf(const std::string& scheme) {
    return velto::handlerOf(scheme);
}

bool LinuxWorkspace::revealFile(const std::filesystem::path& path) {
    return velto::revealFile(path);
}

std::optional<Command> LinuxWorkspace::accessibilitySettings() {
    return velto::accessibilitySettings(variable("XDG_CURRENT_DESKTOP"), variable("PATH"));
}

const KnownApplication* LinuxWorkspace::known(const std::string& executable) const {
    const auto found = std::find_if(table_.begin(), table_.end(), [&](const KnownApplication& application) {
        return application.executable == executable;
    });
    return found != table_.end() ? &*found : nullptr;
}

} // namespace velto
