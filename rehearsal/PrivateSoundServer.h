// A sound server of our own: PulseAudio or PipeWire in one folder, with the virtual devices and no hardware.
#pragma once

#include "VeltoShared/core/Result.h"
#include "rehearsal/SoundPrograms.h"
#include "rehearsal/process/ChildProcess.h"

#include <chrono>
#include <filesystem>
#include <list>
#include <map>
#include <memory>
#include <string>

namespace velto::rehearsal {

enum class SoundServerKind { pulseAudio, pipeWire };

struct PrivateSoundServerOptions {
    SoundServerKind kind = SoundServerKind::pulseAudio;
    SoundDevices devices{};
    std::chrono::milliseconds readyWithin{5000};
};

/// The devices: "VeltoVoice 2ch Feed" (output) heard from "VeltoVoice 2ch Mic" (input), "VeltoLoop 2ch"
/// (both sides), "Speaker" (output) and "Microphone" (input, fed by the output "Microphone Line"). Speaker
/// and Microphone are the defaults at every start: a restart forgets the defaults that were set.
///
/// All operations: one thread at a time. The server dies when the thread that called `start` or `restart`
/// ends, so that nothing stays behind when a process is killed; call them from a thread that lives on.
/// Works as root and as an ordinary user, without D-Bus and without hardware.
class PrivateSoundServer {
  public:
    /// Makes the folder when needed. Its path must leave room for a socket name (about 90 bytes).
    static Result<std::unique_ptr<PrivateSoundServer>> start(const std::filesystem::path& folder,
                                                             PrivateSoundServerOptions options = {});
    ~PrivateSoundServer();
    PrivateSoundServer(const PrivateSoundServer&) = delete;
    PrivateSoundServer& operator=(const PrivateSoundServer&) = delete;

    /// What clients take as PULSE_SERVER.
    std::string address() const;
    /// What a client process should find in its environment: PULSE_SERVER, PULSE_COOKIE.
    std::map<std::string, std::string> clientEnvironment() const;
    /// Its processes, clients speak to the last one; empty while it does not run.
    std::list<ChildProcess>& processes() { return processes_; }

    /// SIGKILL, and waits until the processes are gone.
    void kill();
    /// Ends it if it runs, and starts it again at the same address.
    Result<> restart();
    /// Restart with other devices.
    Result<> restart(SoundDevices devices);
    /// Asks it to end, kills it after a second.
    void stop();

  private:
    PrivateSoundServer(SoundFolder folder, PrivateSoundServerOptions options);

    Result<> launch();
    Result<> launch(const SoundProgram& program, std::chrono::steady_clock::time_point until);
    Result<> waitForDefaults(std::chrono::steady_clock::time_point until);

    SoundFolder folder_;
    PrivateSoundServerOptions options_;
    std::list<ChildProcess> processes_;
};

} // namespace velto::rehearsal
