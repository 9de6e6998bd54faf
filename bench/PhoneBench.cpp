// From opening a number to the phone's "Call" button on the accessibility bus, with the phone not running,
// beside the bare start of its process.
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxWorkspace.h"
#include "VeltoShared/telephony/AX.h"
#include "rehearsal/PhoneRegistration.h"
#include "rehearsal/PrivateDesktop.h"
#include "rehearsal/process/TextFile.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace velto {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 9;
constexpr const char* kScenario = R"({"name":"n","about":"a","number":"1","goal":"g","ends":"agent",
  "lines":[{"mark":1,"side":"callee","text":"Hello?"},{"mark":2,"side":"agent","text":"Bye."}]})";

bool comesTrue(const std::function<bool()>& isSo) {
    const auto deadline = Clock::now() + 20s;
    while (!isSo()) {
        if (Clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

bool offersCall() {
    const auto buttons = AX::buttons();
    return std::any_of(buttons.begin(), buttons.end(),
                       [](const auto& button) { return button.description == "Call"; });
}

/// How long until it comes true, ms; none when it does not.
std::optional<double> milliseconds(const std::function<void()>& begin, const std::function<bool()>& isSo) {
    const auto start = Clock::now();
    begin();
    if (!comesTrue(isSo))
        return {};
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::optional<double> bareStart(const rehearsal::Environment& environment) {
    rehearsal::ChildProgram program;
    program.title = "velto-phone --version";
    program.arguments = {VELTO_PHONE, "--version"};
    program.environment = environment;
    std::optional<rehearsal::ChildProcess> process;
    return milliseconds([&] { process = rehearsal::ChildProcess::start(program); },
                        [&] { return process && process->exitStatus().has_value(); });
}

int run(const std::filesystem::path& folder) {
    const auto folders = rehearsal::makePrivateFolders(folder);
    if (!folders)
        return 1;
    const auto started =
        rehearsal::PrivateDesktop::start(folder, *folders, {.accessibility = true, .display = true});
    if (!started) {
        std::fprintf(stderr, "%s\n", started.error().description.c_str());
        return 1;
    }
    auto& desktop = **started;
    const auto scenario = folder / "scenario.json";
    if (!rehearsal::writePrivateFile(scenario, kScenario) ||
        !rehearsal::registerPhone(
            {VELTO_PHONE,
             {{"DISPLAY", desktop.display()}, {"VELTO_PHONE_LINE", "rehearsal:" + scenario.string()}}},
            *folders))
        return 1;
    for (const auto& [name, value] : desktop.environment())
        ::setenv(name.c_str(), value.c_str(), 1);
    AtspiAccessibility accessibility([](const std::string&) {});
    LinuxWorkspace workspace(accessibility);
    Platform parts;
    parts.accessibility = &accessibility;
    parts.workspace = &workspace;
    installPlatform(parts);

    std::vector<double> opened;
    std::vector<double> bare;
    for (int round = 0; round < kRounds; ++round) {
        const auto start = bareStart(desktop.environment());
        const auto call = milliseconds([&] { workspace.openURL("tel-phoneapp:5551234"); }, offersCall);
        if (!start || !call)
            return 1;
        bare.push_back(*start);
        opened.push_back(*call);
        if (const auto pid = AX::notificationCenterPID())
            ::kill(*pid, SIGKILL);
        if (!comesTrue([] { return !AX::notificationCenterPID(); }))
            return 1;
    }
    std::sort(opened.begin(), opened.end());
    std::sort(bare.begin(), bare.end());
    std::printf(
        "number opened to \"Call\" on the bus: median %.0f ms, longest %.0f ms (aim: under 1000); bare "
        "start of the process: median %.0f ms; ratio %.1f\n",
        opened[kRounds / 2], opened.back(), bare[kRounds / 2], opened[kRounds / 2] / bare[kRounds / 2]);
    return 0;
}

} // namespace
} // namespace velto

int main() {
    return velto::run(velto::test::TemporaryFolder().path());
}
