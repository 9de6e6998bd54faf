#include "tests/views/SettingsWindow.h"

#include <QFont>
#include <QGuiApplication>

namespace velto::test {
namespace {

struct SettingsViewTest : SettingsWindow {
    static constexpr const char* kPanes[] = {"Native",      "Recordings", "History",
                                             "Diagnostics", "Routing",    "Drivers"};
    bool isOn(const QString& toggle) const {
        return reader->find(QAccessible::CheckBox, toggle)->state().checked;
    }
    bool flip(const QString& toggle) const { return press(toggle, QAccessible::CheckBox); }
};

TEST_F(SettingsViewTest, TheDebugTabIsThereWhileItsSettingIsOn) {
    bench.settings.showDebug.set(false);
    open("debug");
    EXPECT_FALSE(reader->finds(QAccessible::PageTab, "Debug"));
    EXPECT_FALSE(reader->finds(QAccessible::ComboBox, "Pane"));
    EXPECT_TRUE(reads("Permissions & driver"));
    EXPECT_TRUE(press("General", QAccessible::PageTab));
    EXPECT_EQ(bench.computer.preferences.text("velto.settingsTab"), "general");
    EXPECT_FALSE(reads("Permissions & driver"));
    EXPECT_TRUE(flip("Show Debug settings"));
    EXPECT_TRUE(bench.settings.showDebug());
    EXPECT_TRUE(press("Debug", QAccessible::PageTab));
    EXPECT_TRUE(reader->finds(QAccessible::ComboBox, "Pane"));
}

TEST_F(SettingsViewTest, EscapeClosesWhatIsOnTopAndThenTheWindow) {
    openPane("Native");
    EXPECT_TRUE(press("Output", QAccessible::ComboBox));
    reader->key(Qt::Key_Escape);
    EXPECT_FALSE(reader->finds(QAccessible::ListItem, "Speaker"));
    EXPECT_TRUE(window->isVisible());
    reader->key(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(SettingsViewTest, WhatIsChangedIsStored) {
    open("general");
    fill("Default goal", "Ask for the opening hours.");
    EXPECT_EQ(bench.settings.defaultGoal(), "Ask for the opening hours.");
    EXPECT_TRUE(flip("Record calls"));
    EXPECT_TRUE(bench.settings.recordCalls());
}

TEST_F(SettingsViewTest, TheLoginItemComesBeforeItsSetting) {
    open("general");
    bench.computer.loginItem.fault = "Permission denied";
    EXPECT_TRUE(flip("Launch at login"));
    EXPECT_TRUE(reads("Could not update login item: Permission denied"));
    EXPECT_FALSE(bench.settings.launchAtLogin());
    EXPECT_FALSE(isOn("Launch at login"));

    bench.computer.loginItem.fault.clear();
    EXPECT_TRUE(flip("Launch at login"));
    EXPECT_TRUE(bench.computer.loginItem.registered());
    EXPECT_TRUE(bench.settings.launchAtLogin());
    EXPECT_TRUE(isOn("Launch at login"));
    EXPECT_FALSE(reads("Could not update login item: Permission denied"));

    bench.computer.loginItem.fault = "No space left on device";
    EXPECT_TRUE(flip("Launch at login"));
    EXPECT_TRUE(bench.settings.launchAtLogin());
    EXPECT_TRUE(isOn("Launch at login"));
}

TEST_F(SettingsViewTest, EveryControlHasANameAndIsReachedByTheKeyboard) {
    bench.addKey();
    bench.addCall("+15550126", 5min, 83);
    for (const char* tab : {"readiness", "general"}) {
        open(tab);
        EXPECT_EQ(reader->nameless(), Notes{}) << tab;
    }
    for (const char* pane : kPanes) {
        openPane(pane);
        EXPECT_EQ(reader->nameless(), Notes{}) << pane;
        const auto stops = reader->tabStops();
        for (const auto& button : reader->enabled(QAccessible::Button))
            EXPECT_GT(std::ranges::count(stops, button), 0) << pane << ": " << button;
    }
}

TEST_F(SettingsViewTest, LettersOfTwiceTheSizeAndLongNamesFit) {
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
    for (const char* tab : {"readiness", "general"}) {
        open(tab);
        press("Enable");
        EXPECT_EQ(reader->cutOff(), Notes{}) << tab;
    }
    for (const char* pane : kPanes) {
        openPane(pane);
        reader->pick("Input", QString::fromStdString(name));
        EXPECT_EQ(reader->cutOff(), Notes{}) << pane;
    }
    QGuiApplication::setFont(usual);
}

} // namespace
} // namespace velto::test
