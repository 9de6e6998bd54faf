// A desktop session of our own: message bus, accessibility, keyring and a display that nobody sees.
#pragma once

#include "VeltoShared/core/Result.h"
#include "rehearsal/process/ChildProcess.h"
#include "rehearsal/process/PrivateFolders.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace velto::rehearsal {

struct PrivateDesktopOptions {
    bool accessibility = false; ///< the accessibility bus, switched on
    bool display = false;       ///< an X server without a screen (Xvfb)
    bool keyring = false;       ///< gnome-keyring with an unlocked default collection
    std::string screen = "1280x800x24";
};

/// All operations: one thread at a time. Its processes die when the thread that started them ends, so that
/// nothing stays behind when a process is killed; start it from a thread that lives on. Works as root and as
/// an ordinary user.
class PrivateDesktop {
  public:
    /// `environment` is that of a program in private folders (`makePrivateFolders`), kept below `folder`,
    /// whose path must leave room for a socket name (about 70 bytes). Sockets and the output of the
    /// programs go to `folder`.
    static Result<std::unique_ptr<PrivateDesktop>>
    start(const std::filesystem::path& folder, Environment environment, const PrivateDesktopOptions& options);
    ~PrivateDesktop();
    PrivateDesktop(const PrivateDesktop&) = delete;
    PrivateDesktop& operator=(const PrivateDesktop&) = delete;

    /// The given environment with this session's bus; not its display.
    const Environment& environment() const { return environment_; }
    /// "DISPLAY" of the display, when there is one.
    const std::string& display() const { return display_; }
    const std::string& busAddress() const { return environment_.at("DBUS_SESSION_BUS_ADDRESS"); }

    /// The processes, to be killed, stopped or watched; none when not running.
    std::optional<ChildProcess>& bus() { return bus_; }
    std::optional<ChildProcess>& accessibility() { return accessibility_; }
    std::optional<ChildProcess>& keyring() { return keyring_; }
    std::optional<ChildProcess>& displayServer() { return displayServer_; }

    /// Ends the keyring's process if it runs and starts it again on the same files, as after a new log-in:
    /// unlocked with its password, or still locked.
    Result<> restartKeyring(bool unlock);
    /// Ends everything and starts it again on the same folders.
    Result<> restart();

  private:
    PrivateDesktop(std::filesystem::path folder, Environment environment, PrivateDesktopOptions options);

    Result<> launch();
    Result<> launchBus();
    Result<> launchAccessibility();
    Result<> launchDisplay();
    void end();
    std::optional<ChildProcess> launchProgram(const std::string& title, std::vector<std::string> arguments,
                                              std::string input = {});

    std::filesystem::path folder_;
    Environment environment_;
    PrivateDesktopOptions options_;
    std::string display_;
    std::optional<ChildProcess> displayServer_;
    std::optional<ChildProcess> bus_;
    std::optional<ChildProcess> accessibility_;
    std::optional<ChildProcess> keyring_;
};

} // namespace velto::rehearsal
