// The machine that a rehearsal plays on: private sound, desktop, keyring and phone app.
#pragma once

#include "VeltoPlatform/linux/PulseHardware.h"
#include "rehearsal/PrivateDesktop.h"
#include "rehearsal/PrivateSoundServer.h"
#include "rehearsal/director/Evidence.h"
#include "rehearsal/director/Stage.h"

#include <filesystem>
#include <memory>
#include <set>
#include <string>

namespace velto::rehearsal {

struct PrivateSessionPlan {
    std::filesystem::path folder;
    Environment folders; ///< of `makePrivateFolders`
    PrivateSoundServerOptions sound;
    Environment display;            ///< where windows are to be seen; empty: nowhere
    std::filesystem::path phone;    ///< velto-phone
    std::filesystem::path scenario; ///< of the person on its line
    std::filesystem::path reports;  ///< socket for the phone app's reports
};

/// Its servers are watched by the stage: when one of them ends by itself, that is the stage's failure. One
/// thread, which must live as long as the session.
class PrivateSession {
  public:
    /// Starts everything, and makes this process one of the session.
    static Result<std::unique_ptr<PrivateSession>> start(const PrivateSessionPlan& plan, Stage& stage);
    ~PrivateSession();

    /// Of every program in the session. The display is not in it: only the phone app gets that.
    const Environment& environment() const { return environment_; }
    /// What the phone app finds beside that.
    const Environment& phoneEnvironment() const { return phoneEnvironment_; }
    DefaultDevices defaultDevices();

    /// Kills the sound server and starts it again.
    Result<> restartSound();
    /// Kills the keyring's daemon; whoever asks for a secret may start another one, which is locked.
    /// False when there is none.
    bool killKeyring();

  private:
    explicit PrivateSession(Stage& stage) : stage_(stage) {}

    Result<> startSound(const PrivateSessionPlan& plan);
    Result<> startDesktop(const PrivateSessionPlan& plan);

    void watch(const std::string& title, pid_t pid);
    void watchSound();
    void unwatch(pid_t pid);

    Stage& stage_;
    std::set<pid_t> watched_;
    Environment environment_;
    Environment phoneEnvironment_;
    std::unique_ptr<PrivateSoundServer> sound_;
    std::unique_ptr<PrivateDesktop> desktop_;
    std::unique_ptr<PulseHardware> hardware_;
};

} // namespace velto::rehearsal
