#include "VeltoPlatform/linux/LinuxPlatform.h"

#include "VeltoPlatform/linux/InstallTree.h"
#include "VeltoPlatform/linux/PulseServer.h"

namespace velto {
namespace {

/// Empty when it cannot be told.
std::filesystem::path runningProgram() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

/// Installed, and otherwise where another prefix, a build or a bundle has it.
AdminHelperPlaces adminHelperPlaces(LinuxFolders& folders) {
    constexpr const char* kName = "velto-admin-helper";
    AdminHelperPlaces places{std::filesystem::path(VELTO_LIBEXEC) / kName, {}};
    if (const auto resources = folders.bundleResources())
        places.others.push_back(*resources / kName);
    for (const auto& folder : {InstallTree::helpers(), InstallTree::programs()})
        if (!folder.empty())
            places.others.push_back(folder / kName);
    return places;
}

} // namespace

LinuxPlatform::LinuxPlatform(std::string executable, std::string_view bundleID, const Report& report)
    : folders_(std::move(executable)),
      preferences_(LinuxFolders::config() / bundleID / "preferences.json", report),
      secrets_(preferences_, folders_.applicationSupport() / bundleID / "keys" / "keys.json", report),
      accessibility_(report), admin_(adminHelperPlaces(folders_), report),
      loginItem_(LinuxFolders::config(), bundleID, runningProgram()) {
    Platform parts;
    parts.folders = &folders_;
    parts.driverPlace = &driverPlace_;
    parts.preferences = &preferences_;
    parts.accessibility = &accessibility_;
    parts.workspace = &workspace_;
    parts.secretStore = &secrets_;
    parts.adminRights = &admin_;
    parts.loginItem = &loginItem_;
    installPlatform(parts);

    const auto server = std::make_shared<PulseServer>(report);
    taps_ = std::make_shared<PulseTaps>(server);
    hardware_ = std::make_unique<PulseHardware>(server, taps_);
    units_ = std::make_unique<PulseUnits>(server, taps_);
    microphone_ = std::make_unique<PulseMicrophone>(server);
    parts.audioHardware = hardware_.get();
    parts.outputUnits = units_.get();
    parts.processTaps = taps_.get();
    parts.microphoneAccess = microphone_.get();
    installPlatform(parts);
}

LinuxPlatform::~LinuxPlatform() {
    installPlatform({});
}

} // namespace velto
