#include "VeltoShared/audio/AudioProcess.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Workspace.h"

#include <algorithm>

namespace velto::AudioProcess {

std::optional<AudioObjectID> objectID(std::string_view bundleID) {
    const auto applications = platform().workspace->runningApplications();
    const auto found = std::ranges::find(applications, bundleID, &RunningApplication::bundleID);
    if (found == applications.end())
        return std::nullopt;
    const auto object = platform().audioHardware->processObject(found->pid);
    if (!object || *object == 0)
        return std::nullopt;
    return object;
}

bool isRunningInput(std::string_view bundleID) {
    const auto object = objectID(bundleID);
    return object && platform().audioHardware->processIsRunningInput(*object).value_or(false);
}

} // namespace velto::AudioProcess
