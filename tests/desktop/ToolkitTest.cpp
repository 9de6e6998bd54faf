// Windows of other people's programs, read and pressed.
#include "VeltoShared/telephony/AX.h"
#include "tests/desktop/DesktopFixture.h"

#include <sys/wait.h>

#include <algorithm>
#include <fstream>

namespace velto::test {
namespace {

using Texts = std::vector<std::string>;

class ToolkitTest : public DesktopTest {
  protected:
    ToolkitTest() : DesktopTest({.accessibility = true, .display = true}) {}

    /// Makes a program's only process the phone app and the notification centre.
    void adopt(const std::string& executable) {
        adopted_ = std::make_unique<LinuxWorkspace>(
            accessibility(),
            std::vector<KnownApplication>{
                {executable, {std::string(AX::kPhoneApp), std::string(AX::kNotificationCenter)}}});
        auto parts = platform();
        parts.workspace = adopted_.get();
        installPlatform(parts);
    }

    static bool shows(const std::string& button) {
        const auto buttons = AX::buttons();
        return std::any_of(buttons.begin(), buttons.end(),
                           [&](const AX::Button& each) { return each.description == button; });
    }

  private:
    std::unique_ptr<LinuxWorkspace> adopted_;
};

TEST_F(ToolkitTest, Gtk3) {
    adopt("zenity");
    auto question = launch({"zenity", "--question", "--text", "Shall it ring?", "--ok-label", "Let it",
                            "--cancel-label", "Be still"});
    ASSERT_TRUE(eventually([] { return shows("Let it") && shows("Be still"); }));
    EXPECT_EQ(AX::texts(std::string(AX::kPhoneApp)), Texts{"Shall it ring?"});
    auto roles = AX::roleCounts(AX::kPhoneApp);
    EXPECT_EQ(roles["AXApplication"], 1);
    EXPECT_EQ(roles["AXButton"], 2);
    EXPECT_EQ(AX::scanAllApps("axbutton", std::string(AX::kPhoneApp)).size(), 2u);
    EXPECT_TRUE(AX::press("be STILL"));
    ASSERT_TRUE(question.endsWithin(kDeadline));
    EXPECT_EQ(WEXITSTATUS(question.exitStatus().value_or(0)), 1);
}

TEST_F(ToolkitTest, Gtk4) {
    adopt("gtk4-builder-tool");
    const TemporaryFolder folder;
    const auto window = folder.path() / "window.ui";
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
    const auto texts = AX::texts(std::string(AX::kPhoneApp));
    EXPECT_NE(std::find(texts.begin(), texts.end(), "Incoming"), texts.end());
    EXPECT_GE(AX::roleCounts(AX::kPhoneApp)["AXButton"], 2);
    EXPECT_EQ(AX::scanAllApps("decline", std::string(AX::kPhoneApp)).size(), 2u); // with its label
    EXPECT_FALSE(AX::press("Off"));
    EXPECT_TRUE(AX::press("Decline"));
    EXPECT_TRUE(eventually([] { return AX::roleCounts(AX::kPhoneApp)["AXWindow"] == 0; }));
}

} // namespace
} // namespace velto::test
