// Windows of other people's programs, read and pressed.
#include "VeltoShared/telephony/AX.h"
#include "tests/desktop/DesktopFixture.h"

#include <sys/wait.h>

#include <algorithm>
#include <fstream>

namespace velto::test {
namespace {

struct ToolkitTest : DesktopTest {
    ToolkitTest() : DesktopTest({.accessibility = true, .display = true}) {}
};

TEST_F(ToolkitTest, Gtk3) {
    auto question = launch({"zenity", "--question", "--text", "Shall it ring?", "--ok-label", "Let it",
                            "--cancel-label", "Be still"});
    ASSERT_TRUE(eventually([] { return shows("Let it") && shows("Be still"); }));
    EXPECT_EQ(AX::texts(), Texts{"Shall it ring?"});
    EXPECT_EQ(AX::scanAllApps("axbutton", std::string(AX::kPhoneApp)).size(), 2u);
    EXPECT_TRUE(AX::press("be STILL"));
    ASSERT_TRUE(question.endsWithin(kDeadline));
    EXPECT_EQ(WEXITSTATUS(question.exitStatus().value_or(0)), 1);
}

TEST_F(ToolkitTest, Gtk4) {
    const auto window = folder() / "window.ui";
    std::ofstream(window) << R"(<interface><object class="GtkWindow" id="window">
        <child><object class="GtkBox">
            <child><object class="GtkLabel"><property name="label">Incoming</property></object></child>
            <child><object class="GtkButton"><property name="label">Hidden</property>
                <property name="visible">0</property></object></child>
            <child><object class="GtkButton"><property name="label">Off</property>
                <property name="sensitive">0</property></object></child>
            <child><object class="GtkButton"><property name="label">Decline</property>
                <property name="action-name">window.close</property></object></child>
        </object></child></object></interface>)";
    auto preview = launch({"gtk4-builder-tool", "preview", "--id=window", window.string()});
    ASSERT_TRUE(eventually([] { return shows("Off") && shows("Decline"); }));
    EXPECT_FALSE(shows("Hidden"));
    EXPECT_EQ(std::ranges::count(AX::texts(), "Incoming"), 1);
    EXPECT_EQ(AX::scanAllApps("decline", std::string(AX::kPhoneApp)).size(), 2u); // with its label
    EXPECT_FALSE(AX::press("Off"));
    EXPECT_TRUE(AX::press("Decline"));
    EXPECT_TRUE(eventually([] { return AX::roleCounts(AX::kPhoneApp)["AXWindow"] == 0; }));
}

} // namespace
} // namespace velto::test
