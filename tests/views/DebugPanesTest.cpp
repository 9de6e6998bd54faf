#include "VeltoShared/core/AppPaths.h"
#include "tests/views/ViewTest.h"

namespace velto::test {
namespace {

struct DebugPanesTest : ViewTest {
    /// The file that was shown last.
    std::string revealed() const {
        const auto files = bench.computer.desktop.revealedFiles();
        return files.empty() ? "" : files.back().string();
    }
    QString root() const { return QString::fromStdString(bench.computer.root().string()); }
};

TEST_F(DebugPanesTest, NativePlacesWatchesAndStopsACall) {
    bench.addKey();
    openPane("Native");
    EXPECT_TRUE(press("Output", QAccessible::ComboBox));
    EXPECT_FALSE(reader->finds(QAccessible::ListItem, "VeltoLoop 2ch")) << "the call";
    EXPECT_TRUE(press("Speaker", QAccessible::ListItem));
    EXPECT_EQ(bench.settings.monitorDevice(), "Speaker");

    EXPECT_FALSE(press("Stop"));
    fill("Number", "+15550126");
    EXPECT_TRUE(press("Call & watch"));
    EXPECT_FALSE(press("Watch"));
    bench.line.answered = true;
    bench.advance(2s);
    EXPECT_TRUE(text("Log").contains("dial: opening tel-phoneapp:+15550126"));
    EXPECT_TRUE(press("Stop"));
    EXPECT_TRUE(press("Watch"));
    bench.advance(2s);
    EXPECT_EQ(std::ranges::count(bench.notes, "dial +15550126"), 1);
}

TEST_F(DebugPanesTest, RoutingShowsWhatIsSoWhileDevicesComeAndGo) {
    bench.computer.audio.addDevice("Headset", 1, 2);
    openPane("Routing");
    EXPECT_TRUE(reader->pick("Input", "Headset"));
    EXPECT_TRUE(reads("Mic: Headset"));

    EXPECT_TRUE(press("Output", QAccessible::ComboBox));
    bench.computer.audio.removeDevice("Headset");
    bench.model->audio()->refresh();
    EXPECT_TRUE(press("Headset", QAccessible::ListItem)) << "rows do not move under the pointer";
    EXPECT_EQ(chosen("Output"), "Speaker");

    EXPECT_TRUE(press("Set bridge defaults"));
    EXPECT_TRUE(reads("Mic: VeltoVoice 2ch Mic"));
    EXPECT_EQ(chosen("Output"), "VeltoLoop 2ch");
    for (const char* device : {"VeltoVoice 2ch Mic", "VeltoLoop 2ch", "Microphone"})
        bench.computer.audio.removeDevice(device);
    EXPECT_TRUE(press("Refresh"));
    EXPECT_TRUE(reads("Bridge devices not installed — Settings → Debug → Drivers"));
    EXPECT_EQ(chosen("Input"), "");
}

TEST_F(DebugPanesTest, OneOfTenThousandCallsIsRead) {
    std::vector<CallRecord> calls(10'000);
    for (std::size_t i = 0; i < calls.size(); ++i)
        calls[i].number = std::to_string(i);
    calls[0].number.clear();
    calls[0].recordingPath = "/elsewhere/call.wav";
    for (int line = 0; line < 3'000; ++line)
        calls[1].transcript += "Agent: line " + std::to_string(line) + "\n";
    bench.history.records.set(std::move(calls));
    openPane("History");
    EXPECT_LT(reader->enabled(QAccessible::ListItem).size(), 40U) << "only what is in sight is made";

    EXPECT_TRUE(press("Unknown", QAccessible::ListItem));
    EXPECT_TRUE(press("Reveal recording"));
    EXPECT_EQ(revealed(), "/elsewhere/call.wav");
    EXPECT_TRUE(press("Done"));

    EXPECT_TRUE(press("1", QAccessible::ListItem));
    EXPECT_FALSE(offers("Reveal recording"));
    EXPECT_TRUE(reads("Agent: line 2999")) << "the newest is in sight";
    reader->key(Qt::Key_Escape);
    EXPECT_FALSE(offers("Done"));

    reader->item(QAccessible::ListItem, "2")->forceActiveFocus();
    reader->key(Qt::Key_Menu);
    EXPECT_TRUE(press("Delete", QAccessible::MenuItem));
    EXPECT_EQ(bench.history.records().size(), 9'999U);
    EXPECT_TRUE(press("Clear"));
    EXPECT_TRUE(bench.history.records().empty());
}

TEST_F(DebugPanesTest, DiagnosticsTellWhatTheyFind) {
    bench.computer.desktop.setTrusted(false);
    bench.computer.preferences.set("bridgeActive", true);
    openPane("Diagnostics");
    EXPECT_TRUE(press("Run checks"));
    EXPECT_EQ(text("Diagnostics").replace(root(), "~"), R"(app: /opt/velto/bin
support: ~/Library/Application Support/org.velto.Velto
logs: ~/Library/Logs/Velto/velto.log
recordings: ~/Library/Application Support/org.velto.Velto/Recordings
accessibility trusted: false
NotificationCenter pid: not running
call active: false
HAL drivers: (none)
driver source: (not found)
default input: Microphone
default output: Speaker
bridge routed: true)");
    bench.computer.audio.removeDevice("VeltoVoice 2ch Mic");
    bench.computer.audio.removeDevice("VeltoLoop 2ch");
    EXPECT_TRUE(press("Loopback probe"));
    EXPECT_EQ(text("Diagnostics"), "uplink (Feed→Mic) rms=0 peak=0 frames=0\n"
                                   "downlink (Loop→Loop) rms=0 peak=0 frames=0");
    EXPECT_TRUE(press("Reveal app log"));
    EXPECT_EQ(revealed(), AppPaths::logFile().string());
    EXPECT_TRUE(press("Restore my devices"));
    EXPECT_FALSE(bench.computer.preferences.boolean("bridgeActive"));
    EXPECT_TRUE(press("Restart CoreAudio"));
    EXPECT_FALSE(press("Restart CoreAudio")) << "one at a time";
    bench.advance(3s);
    EXPECT_EQ(bench.computer.admin.commands.size(), 1U);
}

TEST_F(DebugPanesTest, DriversAreInstalledAndRemoved) {
    const auto source = bench.computer.root() / "Resources" / "Drivers";
    openPane("Drivers");
    std::filesystem::create_directories(source);
    std::filesystem::create_directories(bench.computer.driverPlace.plugIns / "VeltoLoop.driver");
    bench.computer.folders.resources = source.parent_path();
    EXPECT_TRUE(press("Install (admin)"));
    EXPECT_TRUE(text("Drivers").startsWith("Installing from " + root() + "/Resources/Drivers"));
    EXPECT_TRUE(reads("Installed HAL drivers: VeltoLoop.driver"));
    EXPECT_TRUE(press("Uninstall (admin)"));
    EXPECT_TRUE(text("Drivers").startsWith("Uninstall exit 0"));
    bench.app.drivers->busy.set(true);
    EXPECT_EQ(reader->enabled(QAccessible::Button), Notes{});
}

} // namespace
} // namespace velto::test
