// A sound server of our own: one PulseAudio process in one folder, with the virtual devices and no hardware.
#pragma once

#include "VeltoShared/core/Result.h"
#include "rehearsal/process/ChildProcess.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace velto::rehearsal {

struct PrivateSoundServerOptions {
    /// Display names of devices to leave out. "VeltoVoice 2ch Mic" without its feed is a silent source.
    std::set<std::string> without;
    /// Display names of devices that exist but pass silence only.
    std::set<std::string> muted;
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
    /// 0 while it does not run.
    pid_t pid() const { return process_ ? process_->pid() : 0; }

    /// SIGKILL, and waits until the process is gone.
    void kill();
    /// Ends it if it runs, and starts it again at the same address.
    Result<> restart();
    /// Restart with other devices.
    Result<> restart(PrivateSoundServerOptions options);
    /// Asks it to end, kills it after a second.
    void stop();

  private:
    PrivateSoundServer(std::filesystem::path folder, PrivateSoundServerOptions options);

    Result<> launch();
    Result<> waitUntilReady();
    std::filesystem::path socketPath() const { return folder_ / "pulse" / "native"; }

    std::filesystem::path folder_;
    PrivateSoundServerOptions options_;
    std::optional<ChildProcess> process_;
};

} // namespace velto::rehearsal
