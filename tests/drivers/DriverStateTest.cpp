#include "VeltoApp/drivers/DriverState.h"

#include "tests/support/ManualClock.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Names = std::vector<std::string>;

struct DriverStateTest : ::testing::Test {
    DriverStateTest() {
        computer.folders.resources = computer.root() / "Resources";
        environment.set("VELTO_DRIVERS_DIR", "");
    }
    fs::path delivered() {
        fs::create_directories(*computer.folders.resources / "Drivers");
        return *computer.folders.resources / "Drivers";
    }
    void put(const Names& names) {
        for (const auto& name : names)
            fs::create_directories(computer.driverPlace.plugIns / name);
    }

    TestComputer computer;
    Loop loop;
    ScopedEnvironment environment;
    Names lines;
    Helper::Result answer;
    std::function<void()> effect = [] {};
    std::shared_ptr<DriverState> state =
        std::make_shared<DriverState>([this](const std::string& line) -> Helper::Result {
            lines.push_back(line);
            effect();
            return answer;
        });
};

TEST_F(DriverStateTest, InstallsAllThreeInOneLineUnlessAllAreThere) {
    computer.driverPlace.plugIns = "/Library/Audio/Plug-Ins/HAL";
    const auto source = delivered();
    answer.stdout = " \nditto: something\n";
    state->install();
    state->install();
    EXPECT_TRUE(state->busy());
    EXPECT_EQ(state->log(), "Installing from " + source.string() + "…");
    loop.drain();
    EXPECT_FALSE(state->busy());
    std::string line = "mkdir -p /Library/Audio/Plug-Ins/HAL; ";
    for (const std::string driver : {"/VeltoHQ.driver", "/VeltoLoop.driver", "/VeltoVoice.driver"}) {
        const auto place = "/Library/Audio/Plug-Ins/HAL" + driver;
        line += "ditto " + source.string() + driver + " " + place + "; xattr -cr " + place + "; ";
    }
    EXPECT_EQ(lines, Names{line + "killall coreaudiod || true"});
    EXPECT_EQ(state->log(),
              "Installing from " + source.string() + "…\nditto: something\nexit 0 — installed: ");

    computer.driverPlace.plugIns = computer.root() / "HAL";
    put({"velto.driver", "VeltoOld.driver", "VeltoLoop.driver", "VeltoHQ.driver", "Other.driver"});
    effect = [this] { put({"VeltoVoice.driver"}); };
    answer.stdout.clear();
    state->install();
    loop.drain();
    EXPECT_EQ(lines.size(), 2u);
    EXPECT_EQ(state->log(), "Installing from " + source.string() +
                                "…\n\nexit 0 — installed: VeltoHQ.driver, VeltoLoop.driver, "
                                "VeltoOld.driver, VeltoVoice.driver");
    state->install();
    loop.drain();
    EXPECT_EQ(lines.size(), 2u);
    EXPECT_EQ(state->log(), "Drivers already installed — nothing to do.");
    EXPECT_FALSE(state->busy());
}

TEST_F(DriverStateTest, TheFirstSourceThatExistsWins) {
    const auto before = fs::current_path();
    const auto working = computer.root() / "working";
    fs::create_directories(working / "named here");
    fs::current_path(working);
    EXPECT_EQ(DriverState::sourceDir(), std::nullopt);
    state->install();
    EXPECT_EQ(state->log(), "Driver bundles not found in the app. Build with mac/bundle.");
    EXPECT_FALSE(state->busy());

    fs::create_directories(working / "velto-audio-driver");
    EXPECT_EQ(DriverState::sourceDir(), working / "velto-audio-driver");
    const auto inApp = delivered();
    EXPECT_EQ(DriverState::sourceDir(), inApp);
    environment.set("VELTO_DRIVERS_DIR", (computer.root() / "missing").string());
    EXPECT_EQ(DriverState::sourceDir(), inApp);
    environment.set("VELTO_DRIVERS_DIR", "named here");
    EXPECT_EQ(DriverState::sourceDir(), working / "named here"); // root's shell stands elsewhere
    fs::current_path(before);
}

TEST_F(DriverStateTest, RefusalsAndCancellationEndInTheLogAndLeaveNothingBusy) {
    const auto source = delivered();
    put({"VeltoLoop.driver"});
    answer = {-60006, "", "authorization failed (-60006)"};
    for (std::size_t again = 1; again < 3; ++again) {
        state->install();
        loop.drain();
        EXPECT_EQ(state->log(),
                  "Installing from " + source.string() +
                      "…\nauthorization failed (-60006)\nexit -60006 — installed: VeltoLoop.driver");
        EXPECT_EQ(lines.size(), again);
    }
    state->uninstall();
    loop.drain();
    EXPECT_EQ(state->log(), "Uninstall exit -60006\nauthorization failed (-60006)");
    EXPECT_FALSE(state->busy());
}

TEST_F(DriverStateTest, UninstallReplacesTheLogAndRestartAppendsToItThreeSecondsLater) {
    computer.driverPlace.plugIns = "/Plug Ins";
    answer.stdout = "\tgone\n";
    state->uninstall();
    state->uninstall();
    loop.drain();
    EXPECT_EQ(lines, Names{"rm -rf '/Plug Ins/VeltoHQ.driver'; rm -rf '/Plug Ins/VeltoLoop.driver'; "
                           "rm -rf '/Plug Ins/VeltoVoice.driver'; killall coreaudiod || true"});
    EXPECT_EQ(state->log(), "Uninstall exit 0\ngone");

    answer = {0, "out", "err"};
    const std::string report = "\n$ killall coreaudiod (admin)\nouterr (exit 0)";
    state->restartCoreAudio();
    state->restartCoreAudio();
    loop.advance(2s);
    EXPECT_TRUE(state->busy());
    EXPECT_EQ(state->log(), "Uninstall exit 0\ngone");
    loop.advance(1s);
    EXPECT_FALSE(state->busy());
    EXPECT_EQ(state->log(), "Uninstall exit 0\ngone" + report);
    state->restartCoreAudio();
    loop.advance(3s);
    EXPECT_EQ(state->log(), "Uninstall exit 0\ngone" + report + report);
    EXPECT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines.back(), "killall coreaudiod");

    state->restartCoreAudio();
    loop.drain();
    state.reset();
    loop.advance(3s); // nobody is left to tell
}

} // namespace
} // namespace velto::test
