// The one place that says which operating system the rest stands on.
#pragma once

namespace velto {

class Accessibility;
class AdminRights;
class AudioHardware;
class DriverPlace;
class Folders;
class MicrophoneAccess;
class OutputUnits;
class Preferences;
class ProcessTaps;
class SecretStore;
class Workspace;

/// One implementation of every interface; none of them may be missing. Owned by the composition root, which
/// keeps them alive for as long as anything uses them.
struct Platform {
    AudioHardware* audioHardware = nullptr;
    OutputUnits* outputUnits = nullptr;
    ProcessTaps* processTaps = nullptr;
    MicrophoneAccess* microphoneAccess = nullptr;
    Accessibility* accessibility = nullptr;
    Workspace* workspace = nullptr;
    SecretStore* secretStore = nullptr;
    Preferences* preferences = nullptr;
    Folders* folders = nullptr;
    AdminRights* adminRights = nullptr;
    DriverPlace* driverPlace = nullptr;
};

/// The installed platform. Any thread, after `installPlatform`.
const Platform& platform();
/// Called by a composition root or a test, before threads use the platform.
void installPlatform(const Platform& platform);

} // namespace velto
