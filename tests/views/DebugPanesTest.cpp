#include "VeltoShared/core/AppPaths.h"
#include "tests/views/SettingsWindow.h"

#include <fstream>

namespace velto::test {
namespace {

struct DebugPanesTest : SettingsWindow {
    QString chosen(const QString& picker) const {
        return reader->item(QAccessible::ComboBox, picker)->property("displayText").toString();
    }
    /// The file that was shown last.
    std::string revealed() const {
        const auto files = bench.computer.desktop.revealedFiles();
        return files.empty() ? "" : files.back().string();
    }
};

TEST_F(DebugPanesTest, NativePlacesWatchesAndStopsACall) {
    bench.addKey();
    openPane("Native");
    EXPECT_FALSE(press("Stop"));
    fill("Number", "+15550126");
    fill("Goal", "Book a table");
    EXPECT_TRUE(press("Call & watch"));
    EXPECT_FALSE(press("Watch"));
    bench.line.answered = true;
    bench.advance(2s);
    ASSERT_EQ(bench.agents.made.size(), 1U);
    EXPECT_EQ(bench.agents.made[0].goal, "Book a table");
    EXPECT_TRUE(text("Log").contains("dial: opening tel-phoneapp:+15550126"));
    EXPECT_TRUE(reads("Session: live"));
    EXPECT_TRUE(press("Stop"));
    EXPECT_TRUE(reads("Session: ended"));
    const auto dialled = std::ranges::count(bench.notes, "dial +15550126");
    EXPECT_TRUE(press("Watch"));
    bench.advance(2s);
    EXPECT_EQ(std::ranges::count(bench.notes, "dial +15550126"), dialled);
}

TEST_F(DebugPanesTest, TheMonitorNeverPlaysIntoTheCall) {
    openPane("Native");
    EXPECT_TRUE(press("Output", QAccessible::ComboBox));
    EXPECT_TRUE(reader->finds(QAccessible::ListItem, "Speaker"));
    EXPECT_FALSE(reader->finds(QAccessible::ListItem, "VeltoLoop 2ch"));
    EXPECT_TRUE(press("Speaker", QAccessible::ListItem));
    EXPECT_EQ(bench.settings.monitorDevice(), "Speaker");
}

TEST_F(DebugPanesTest, RoutingShowsWhatIsSoWhileDevicesComeAndGo) {
    bench.computer.audio.addDevice("Headset", 1, 2);
    openPane("Routing");
    EXPECT_TRUE(reads("Mic: Microphone"));
    EXPECT_TRUE(reads("Bridge: mic VeltoVoice 2ch Mic, out VeltoLoop 2ch. Agent: mic VeltoLoop 2ch → feed "
                      "VeltoVoice 2ch Feed."));
    EXPECT_TRUE(reader->pick("Input", "Headset"));
    EXPECT_TRUE(reads("Mic: Headset"));

    EXPECT_TRUE(press("Output", QAccessible::ComboBox));
    bench.computer.audio.removeDevice("Headset");
    bench.model->audio()->refresh();
    bench.settle();
    EXPECT_TRUE(press("Headset", QAccessible::ListItem)) << "rows do not move under the pointer";
    EXPECT_TRUE(reads("Out: Speaker"));
    EXPECT_EQ(chosen("Output"), "Speaker");

    EXPECT_TRUE(press("Set bridge defaults"));
    EXPECT_TRUE(reads("Mic: VeltoVoice 2ch Mic"));
    EXPECT_EQ(chosen("Output"), "VeltoLoop 2ch");
    for (const char* device :
         {"VeltoVoice 2ch Mic", "VeltoVoice 2ch Feed", "VeltoLoop 2ch", "Speaker", "Microphone"})
        bench.computer.audio.removeDevice(device);
    EXPECT_TRUE(press("Refresh"));
    EXPECT_TRUE(reads("Bridge devices not installed — Settings → Debug → Drivers"));
    EXPECT_EQ(chosen("Input"), "");
}

TEST_F(DebugPanesTest, RecordingsAreMadeListedPlayedAndShown) {
    std::ofstream(AppPaths::recordings() / "old.wav") << std::string(5000, 'x');
    openPane("Recordings");
    EXPECT_TRUE(reads("old.wav"));
    EXPECT_TRUE(reads("4 KB"));
    fill("Play device", "Gramophone");
    EXPECT_TRUE(press("Play"));
    EXPECT_TRUE(reads("Cannot play old.wav on Gramophone"));
    EXPECT_TRUE(press("Reveal"));
    EXPECT_EQ(revealed(), (AppPaths::recordings() / "old.wav").string());
    EXPECT_TRUE(press("Record downlink (5 min)"));
    EXPECT_FALSE(offers("Record downlink (5 min)"));
    bench.advance(300s);
    EXPECT_TRUE(reads("Saved"));
    EXPECT_EQ(reader->count(QAccessible::ListItem), 2);
    bench.computer.audio.removeDevice("VeltoLoop 2ch");
    EXPECT_TRUE(press("Record downlink (5 min)"));
    EXPECT_TRUE(reads("Capture device not found: VeltoLoop 2ch"));
}

TEST_F(DebugPanesTest, OneOfTenThousandCallsIsRead) {
    std::vector<CallRecord> calls(10'000);
    for (std::size_t i = 0; i < calls.size(); ++i)
        calls[i].number = std::to_string(i);
    calls[0].number.clear();
    calls[0].recordingPath = "/elsewhere/call.wav";
    for (int line = 0; line < 3'000; ++line)
        calls[1].transcript += (line == 0 ? "" : "\n") + std::string("Agent: line ") + std::to_string(line);
    bench.history.records.set(std::move(calls));
    openPane("History");
    EXPECT_LT(reader->count(QAccessible::ListItem), 40) << "only what is in sight is made";

    EXPECT_TRUE(press("Unknown", QAccessible::ListItem));
    EXPECT_TRUE(reads("(no transcript)"));
    EXPECT_TRUE(press("Reveal recording"));
    EXPECT_EQ(revealed(), "/elsewhere/call.wav");
    EXPECT_TRUE(press("Done"));
    EXPECT_FALSE(offers("Done"));

    EXPECT_TRUE(press("1", QAccessible::ListItem));
    EXPECT_FALSE(offers("Reveal recording"));
    EXPECT_TRUE(reads("Agent: line 2999")) << "the newest is in sight";
    reader->key(Qt::Key_Escape);
    EXPECT_FALSE(offers("Done"));

    reader->item(QAccessible::ListItem, "2")->forceActiveFocus();
    reader->key(Qt::Key_Menu);
    EXPECT_EQ(reader->enabled(QAccessible::MenuItem), Notes{"Delete"});
    EXPECT_TRUE(press("Delete", QAccessible::MenuItem));
    EXPECT_EQ(bench.history.records().size(), 9'999U);
    EXPECT_FALSE(reader->finds(QAccessible::ListItem, "2"));
    EXPECT_TRUE(press("Clear"));
    EXPECT_TRUE(bench.history.records().empty());
    EXPECT_TRUE(reads("(no calls yet)"));
}

TEST_F(DebugPanesTest, DiagnosticsTellWhatTheyFind) {
    bench.computer.desktop.setTrusted(false);
    bench.computer.preferences.set("bridgeActive", true);
    openPane("Diagnostics");
    EXPECT_EQ(text("Diagnostics"), "(run checks)");
    EXPECT_TRUE(press("Run checks"));
    const auto root = QString::fromStdString(bench.computer.root().string());
    EXPECT_EQ(text("Diagnostics"), "app: /opt/velto/bin\n"
                                   "support: " +
                                       root +
                                       "/Library/Application Support/org.velto.Velto\n"
                                       "logs: " +
                                       root +
                                       "/Library/Logs/Velto/velto.log\n"
                                       "recordings: " +
                                       root +
                                       "/Library/Application Support/org.velto.Velto/Recordings\n"
                                       "accessibility trusted: false\n"
                                       "NotificationCenter pid: not running\n"
                                       "call active: false\n"
                                       "HAL drivers: (none)\n"
                                       "driver source: (not found)\n"
                                       "default input: Microphone\n"
                                       "default output: Speaker\n"
                                       "bridge routed: true");
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
    EXPECT_EQ(bench.commands, Notes{"killall coreaudiod"});
}

TEST_F(DebugPanesTest, DriversAreInstalledAndRemoved) {
    const auto source = bench.computer.root() / "Resources" / "Drivers";
    openPane("Drivers");
    EXPECT_TRUE(reads("Installed HAL drivers: (none)"));
    EXPECT_TRUE(reads("Source: (not found)"));
    std::filesystem::create_directories(source);
    std::filesystem::create_directories(bench.computer.driverPlace.plugIns / "VeltoLoop.driver");
    bench.computer.folders.resources = source.parent_path();
    EXPECT_TRUE(press("Install (admin)"));
    EXPECT_TRUE(text("Drivers").startsWith("Installing from " + QString::fromStdString(source.string())));
    EXPECT_TRUE(reads("Installed HAL drivers: VeltoLoop.driver"));
    EXPECT_TRUE(reads("Source: " + QString::fromStdString(source.string())));
    EXPECT_TRUE(press("Uninstall (admin)"));
    EXPECT_TRUE(text("Drivers").startsWith("Uninstall exit 0"));
    bench.app.drivers->busy.set(true);
    bench.settle();
    for (const char* button : {"Install (admin)", "Uninstall (admin)", "Restart CoreAudio"})
        EXPECT_FALSE(press(button)) << button;
}

} // namespace
} // namespace velto::test
