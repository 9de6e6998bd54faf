#include "tests/views/ViewTest.h"

#include <QFont>
#include <QGuiApplication>

namespace velto::test {
namespace {

struct SettingsViewTest : ViewTest {
    bool isOn(const QString& toggle) const {
        return reader->find(QAccessible::CheckBox, toggle)->state().checked;
    }
    bool flip(const QString& toggle) const { return press(toggle, QAccessible::CheckBox); }
};

TEST_F(SettingsViewTest, TheDebugTabComesWithItsSettingAndEscapeClosesWhatIsOnTop) {
    bench.settings.showDebug.set(false);
    openSettings("debug");
    EXPECT_FALSE(reader->finds(QAccessible::PageTab, "Debug"));
    EXPECT_TRUE(reads("Permissions & driver"));
    EXPECT_TRUE(press("General", QAccessible::PageTab));
    EXPECT_EQ(bench.computer.preferences.text("velto.settingsTab"), "general");
    EXPECT_TRUE(flip("Show Debug settings"));
    EXPECT_TRUE(press("Debug", QAccessible::PageTab));
    EXPECT_TRUE(press("Pane", QAccessible::ComboBox));
    reader->key(Qt::Key_Escape);
    EXPECT_FALSE(reader->finds(QAccessible::ListItem, "History"));
    EXPECT_TRUE(window->isVisible());
    reader->key(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(SettingsViewTest, WhatIsChangedIsStoredAndTheLoginItemComesBeforeItsSetting) {
    openSettings("general");
    fill("Default goal", "Ask for the opening hours.");
    EXPECT_EQ(bench.settings.defaultGoal(), "Ask for the opening hours.");
    EXPECT_TRUE(flip("Record calls"));
    EXPECT_TRUE(bench.settings.recordCalls());

    bench.computer.loginItem.fault = "Permission denied";
    EXPECT_TRUE(flip("Launch at login"));
    EXPECT_TRUE(reads("Could not update login item: Permission denied"));
    EXPECT_FALSE(bench.settings.launchAtLogin());
    EXPECT_FALSE(isOn("Launch at login"));

    bench.computer.loginItem.fault.clear();
    EXPECT_TRUE(flip("Launch at login"));
    EXPECT_TRUE(bench.computer.loginItem.registered());
    EXPECT_TRUE(bench.settings.launchAtLogin());
    EXPECT_FALSE(reads("Could not update login item: Permission denied"));

    bench.computer.loginItem.fault = "No space left on device";
    EXPECT_TRUE(flip("Launch at login"));
    EXPECT_TRUE(bench.settings.launchAtLogin());
    EXPECT_TRUE(isOn("Launch at login"));
}

TEST_F(SettingsViewTest, EveryControlHasANameIsReachedByTheKeyboardAndFitsWithLettersOfTwiceTheSize) {
    const auto usual = QGuiApplication::font();
    auto large = usual;
    large.setPixelSize(30);
    QGuiApplication::setFont(large);
    const std::string name = "Wonderful Audio Interface 24 In / 16 Out";
    bench.computer.audio.addDevice(name, 2, 2);
    bench.settings.monitorDevice.set(name);
    bench.settings.launchAtLogin.set(true);
    bench.computer.desktop.setTrusted(false, "no accessibility bus runs in this session");
    bench.addKey();
    bench.addCall(std::string(40, '8'), 5min, 83);
    bench.addRecording("call-20261120-141503.wav", {1});
    bench.app.nativeSession->number.set(std::string(40, '8'));
    bench.app.agent->goal.set(std::string(10'240, 'x'));
    for (const std::string place : {"main", "readiness", "general", "Native", "Recordings", "History",
                                    "Diagnostics", "Routing", "Drivers"}) {
        SCOPED_TRACE(place);
        if (place == "main")
            open();
        else if (place == "readiness" || place == "general")
            openSettings(place.c_str());
        else
            openPane(place.c_str());
        window->resize(window->minimumSize());
        press("Enable");
        reader->pick("Input", QString::fromStdString(name));
        const auto buttons = reader->enabled(QAccessible::Button);
        EXPECT_EQ(reader->cutOff(), Notes{});
        EXPECT_EQ(reader->nameless(), Notes{});
        const auto stops = reader->tabStops();
        for (const auto& button : buttons)
            EXPECT_GT(std::ranges::count(stops, button), 0) << button;
    }
    QGuiApplication::setFont(usual);
}

} // namespace
} // namespace velto::test
