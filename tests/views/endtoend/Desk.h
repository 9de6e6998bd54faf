// A rehearsed session with the application's windows in it, and a person at it: through the accessibility
// bus, and with keyboard and pointer.
#pragma once

#include "VeltoPlatform/linux/AtspiAccessibility.h"
#include "VeltoPlatform/linux/LinuxFolders.h"
#include "VeltoPlatform/linux/SecretServiceStore.h"
#include "rehearsal/director/PrivateSession.h"
#include "rehearsal/director/RehearsalKeys.h"
#include "rehearsal/director/Surroundings.h"
#include "tests/views/endtoend/Watchdog.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct _XDisplay;

namespace velto::test {

/// One thread.
class Desk {
  public:
    /// Starts sound, desktop, keyring, display and voice server. Throws when that cannot be done.
    /// Its folder has this name within the guardian's.
    Desk(const rehearsal::GuardianLink& guardian, const std::string& name);
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Starts the application, with other variables than the session's; false when it does not answer.
    bool start(const rehearsal::Environment& others = {});
    /// Ends it as a log-out would.
    void end();

    /// Something in a window.
    struct Seen {
        ElementRef element;
        std::string role;
        std::array<std::string, 3> texts; ///< name, description and value
        ScreenPoint at;
        bool is(const char* itsRole, const std::string& name) const {
            return role == itsRole && texts[0] == name;
        }
    };
    std::vector<Seen> look();
    std::optional<Seen> find(const char* role, const std::string& name);
    bool goes(const char* role, const std::string& name) {
        return eventually([&] { return !find(role, name); });
    }
    /// Waits for all of them, and answers those that still stand nowhere.
    std::vector<std::string> missing(std::vector<std::string> texts);
    bool comes(const std::string& text) { return missing({text}).empty(); }
    /// Waits for it, and presses it as the toolkit does.
    bool press(const std::string& name, const char* role = "AXButton");
    /// Clicks into a field, so that it has the keyboard.
    bool enter(const std::string& field);
    /// Has another program copy it (this one, told to "copy"), and presses Control-V.
    void paste(const std::string& text);
    enum class Button : unsigned { left = 1, right = 3, down = 5 };
    void click(double x, double y, Button button = Button::left);
    /// By its name among X11's key symbols, with another one held down.
    void key(const char* name, const char* held = nullptr);
    /// Characters of a keyboard for US English; a line end is the Return key.
    void type(const std::string& text);
    /// The settings window, to its end.
    void scrollDown();
    bool eventually(const std::function<bool()>& isSo);

  private:
    rehearsal::GuardianLink link_;

  public:
    rehearsal::RehearsalKeys keys;
    rehearsal::Surroundings surroundings;
    rehearsal::Stage stage;
    std::unique_ptr<rehearsal::PrivateSession> session;
    std::unique_ptr<Watchdog> watchdog;

  private:
    rehearsal::ChildProgram program(const std::filesystem::path& file,
                                    std::vector<std::string> arguments) const;
    void press(unsigned long symbol, const char* held);

    LinuxFolders folders_{"velto-windows-test"};
    SecretServiceStore keyring_{[](const std::string&) {}};
    rehearsal::Evidence evidence_;
    std::unique_ptr<AtspiAccessibility> accessibility_;
    rehearsal::ChildProcess* application_ = nullptr;
    _XDisplay* display_ = nullptr;
    bool copied_ = false;
};

} // namespace velto::test
