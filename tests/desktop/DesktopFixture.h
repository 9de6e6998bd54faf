// A private desktop session with the accessibility backend on it, installed as the platform.
#pragma once

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxWorkspace.h"
#include "rehearsal/PrivateDesktop.h"
#include "tests/support/Eventually.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace velto::test {

using rehearsal::ChildProcess;
using Texts = std::vector<std::string>;

/// Any program that a test launches is the phone app and the notification centre. This process has the
/// session's environment.
class DesktopTest : public ::testing::Test {
  protected:
    static constexpr std::chrono::seconds kDeadline{20};
    /// What a target shows in an answered call.
    static constexpr const char* kInCall = R"({"role": 75, "name": "phone", "children": [
        {"id": "end", "role": 43, "name": "End", "actions": ["Press"]}, {"role": 29, "name": "0:07"}]})";

    explicit DesktopTest(rehearsal::PrivateDesktopOptions options = {.accessibility = true});

    /// Puts a new backend in place, which has seen nothing yet and has all its patience.
    void renewBackend();
    ChildProcess launch(const std::vector<std::string>& arguments, const std::string& input = {});
    /// A scripted target (`tests/support/ScriptedTarget.cpp`), once it takes part; with its name on the bus.
    struct Target {
        ChildProcess process;
        std::string name{};
    };
    Target launchTarget(const std::string& description);
    /// Replaces what a target shows.
    void show(const Target& target, const std::string& description);
    /// Of its first element.
    std::vector<ElementRef> childrenOf(const Target& target);
    /// What a target wrote next.
    static std::string nextLine(Target& target) {
        return test::nextLine(target.process, [] {});
    }
    static bool hasSaidNothingElse(Target& target) { return target.process.readLines().empty(); }
    /// Names of the buttons of what is the notification centre.
    static Texts buttons();
    static bool shows(const char* button) { return std::ranges::count(buttons(), button) > 0; }
    Texts reports();

  private:
    TemporaryFolder folder_;
    TestComputer computer_;
    rehearsal::Environment session_;
    ScopedEnvironment environment_;
    std::mutex mutex_;
    Texts reports_;
    std::unique_ptr<rehearsal::PrivateDesktop> desktop_;
    std::unique_ptr<AtspiAccessibility> accessibility_;
    std::unique_ptr<LinuxWorkspace> workspace_;

  protected:
    const std::filesystem::path& folder() { return folder_.path(); }
    rehearsal::PrivateDesktop& desktop() { return *desktop_; }
    AtspiAccessibility& accessibility() { return *accessibility_; }
    LinuxWorkspace& workspace() { return *workspace_; }
};

} // namespace velto::test
