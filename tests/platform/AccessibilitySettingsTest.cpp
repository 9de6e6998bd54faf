#include "VeltoPlatform/linux/AccessibilitySettings.h"

#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

TEST(AccessibilitySettingsTest, TheProgramOfTheDesktopThatRunsIsStarted) {
    const TemporaryFolder programs;
    for (const char* name : {"gnome-control-center", "systemsettings5", "mate-at-properties"})
        writeProgram(programs.path() / name, "");
    const auto path = "relative::/nowhere:" + programs.path().string();
    const auto shown = [&](const char* desktops) {
        const auto command = accessibilitySettings(desktops, path);
        std::string text;
        for (std::size_t i = 3; command && i < command->arguments.size(); ++i)
            text += std::filesystem::path(command->arguments[i]).filename().string() + " ";
        return text;
    };
    EXPECT_EQ(shown("ubuntu:GNOME"), "gnome-control-center universal-access ");
    EXPECT_EQ(shown("KDE"), "systemsettings5 kcm_access ");
    EXPECT_EQ(shown("MATE"), "mate-at-properties ");
    EXPECT_EQ(shown("XFCE"), "") << "its program is not installed";
    EXPECT_EQ(shown("gnome:sway"), "");
    EXPECT_EQ(shown(""), "");
}

} // namespace
} // namespace velto::test
