// A private desktop session with the accessibility backend on it, installed as the platform.
#pragma once

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxWorkspace.h"
#include "rehearsal/PrivateDesktop.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace velto::test {

using rehearsal::ChildProcess;

class DesktopTest : public ::testing::Test {
  protected:
    static constexpr std::chrono::seconds kDeadline{20};

    explicit DesktopTest(rehearsal::PrivateDesktopOptions options = {.accessibility = true});
    ~DesktopTest() override;

    /// Puts a new backend in place, which has seen nothing yet and has all its patience.
    void renewBackend();
    /// A program of the session; what it writes can be read, with `lines`, or is kept in the folder.
    ChildProcess launch(const std::vector<std::string>& arguments, const std::string& input = {},
                        bool lines = false);
    /// A scripted target (`tests/support/ScriptedTarget.cpp`), once it takes part; with its name on the bus.
    struct Target {
        ChildProcess process;
        std::string name{};
        std::deque<std::string> lines{}; ///< that it wrote and nobody has asked for
    };
    Target launchTarget(const std::string& description);
    /// Replaces what a target shows.
    void show(const Target& target, const std::string& description);
    /// Of its first element.
    std::vector<ElementRef> childrenOf(const Target& target);
    /// What a target wrote next.
    static std::string nextLine(Target& target);
    static bool hasSaidNothingElse(Target& target);

    static bool eventually(const std::function<bool()>& isSo);
    std::vector<std::string> reports();

  private:
    TemporaryFolder folder_;
    TestComputer computer_;
    std::mutex mutex_;
    std::vector<std::string> reports_;
    std::unique_ptr<rehearsal::PrivateDesktop> desktop_;
    std::unique_ptr<AtspiAccessibility> accessibility_;
    std::unique_ptr<LinuxWorkspace> workspace_;

  protected:
    rehearsal::PrivateDesktop& desktop() { return *desktop_; }
    AtspiAccessibility& accessibility() { return *accessibility_; }
    LinuxWorkspace& workspace() { return *workspace_; }
    TestComputer& computer() { return computer_; }
    std::string accessibilityAddress();
};

} // namespace velto::test
