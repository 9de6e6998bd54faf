// What a private sound server consists of, for each kind of server.
#pragma once

#include "VeltoShared/core/Result.h"
#include "rehearsal/process/ChildProcess.h"

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace velto::rehearsal {

struct SoundDevices {
    /// Display names of devices to leave out. "VeltoVoice 2ch Mic" without its feed is a silent source.
    std::set<std::string> without;
    /// Display names of devices that exist but pass silence only.
    std::set<std::string> muted;

    bool has(const std::string& name) const { return !without.contains(name); }
    bool passes(const std::string& name) const { return has(name) && !muted.contains(name); }
};

/// Everything that a server of one's own keeps in a folder.
struct SoundFolder {
    std::filesystem::path root;

    std::filesystem::path clientSocket() const { return root / "pulse" / "native"; }
    /// Of its programs: private folders, no message bus.
    std::map<std::string, std::string> environment() const;
};

/// One program of a server. They are started in order, each when the one before it is ready.
struct SoundProgram {
    ChildProgram program;
    std::filesystem::path log;    ///< what it says when it does not start
    std::filesystem::path socket; ///< takes connections once it is ready; empty: ready at once
};

/// Writes what the programs read. Clients speak to the last one.
Result<std::vector<SoundProgram>> pulseAudioPrograms(const SoundFolder& folder, const SoundDevices& devices);
/// PipeWire 0.3 with WirePlumber 0.4 and pipewire-pulse.
Result<std::vector<SoundProgram>> pipeWirePrograms(const SoundFolder& folder, const SoundDevices& devices);

} // namespace velto::rehearsal
