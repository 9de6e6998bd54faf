// The accessibility toolkit against trees of every shape, with its limits and faults.
#include "VeltoShared/telephony/AX.h"

#include "VeltoShared/telephony/Letters.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

class AXTest : public ::testing::Test {
  protected:
    TestComputer computer;
    SimulatedDesktop& desktop = computer.desktop;
    SimulatedElementRef center = desktop.launch("com.apple.notificationcenterui", 40);

    static std::vector<std::string> described() {
        std::vector<std::string> texts;
        for (const auto& button : AX::buttons())
            texts.push_back(button.description);
        return texts;
    }
};

TEST_F(AXTest, buttonsListsDescribedButtonsInPreOrder) {
    auto outer = center->add({.role = "AXGroup"})
                     ->add({.role = "AXButton", .description = "Outer", .position = ScreenPoint{3, 4.5}});
    outer->addButton("Inner");
    outer->addButton("");
    outer->add({.role = "AXMenuButton", .description = "no button"});
    outer->addButton("x")->set(Attribute::description, 7.0);
    center->addButton("Last")->set(Attribute::position, std::string("3,4"));
    EXPECT_EQ(described(), (std::vector<std::string>{"Outer", "Inner", "Last"}));
    const auto buttons = AX::buttons();
    EXPECT_EQ(std::pair(buttons[0].x, buttons[0].y), std::pair(3.0, 4.5));
    EXPECT_EQ(buttons[2].x, 0);
}

TEST_F(AXTest, withoutAccessOrNotificationCenterNothingIsReadOrPressed) {
    auto button = center->addButton("End");
    desktop.setTrusted(false);
    EXPECT_TRUE(AX::buttons().empty());
    EXPECT_TRUE(AX::texts().empty());
    EXPECT_FALSE(AX::press("End"));
    EXPECT_EQ(desktop.elementReads(), 0);
    desktop.setTrusted(true);
    desktop.quit("com.apple.notificationcenterui");
    EXPECT_EQ(AX::notificationCenterPID(), std::nullopt);
    EXPECT_FALSE(AX::press("End"));
    EXPECT_EQ(button->pressAttempts(), 0);
}

TEST_F(AXTest, pressTakesTheFirstMatchWhosePressSucceeds) {
    auto refusing = center->addButton("END");
    refusing->failPress();
    auto below = refusing->addButton("End"); // never searched below a match
    auto titled = center->add({.role = "AXButton", .title = "eNd"});
    auto later = center->addButton("End");
    EXPECT_TRUE(AX::press("end"));
    EXPECT_EQ(refusing->pressAttempts(), 1);
    EXPECT_EQ(below->pressAttempts(), 0);
    EXPECT_EQ(titled->presses(), 1);
    EXPECT_EQ(later->pressAttempts(), 0);

    auto other = center->addButton("Auflegen Ü");
    other->addButton("Nested");
    EXPECT_TRUE(AX::press("auflegen ü"));
    EXPECT_TRUE(AX::press("nested")); // below a button that is no match
    EXPECT_FALSE(AX::press("Absent"));
}

TEST_F(AXTest, textsTakesUpToThreeEntriesFromTextElements) {
    center->add({.role = "AXStaticText", .title = "t", .description = "d", .value = "v"});
    center->add({.role = "AXGenericElement", .description = "d", .value = 3.0});
    center->add({.role = "AXTextField", .value = "no"});
    EXPECT_EQ(AX::texts(), (std::vector<std::string>{"d", "v", "t", "d"}));
    EXPECT_TRUE(AX::texts("com.example.absent").empty());
    desktop.launch("com.example.app")->addText("first");
    desktop.launch("com.example.app")->addText("second");
    EXPECT_EQ(AX::texts("com.example.app"), std::vector<std::string>{"first"});
}

TEST_F(AXTest, walksEndAtDepth79AndAtTheBudget) {
    auto at79 = center->addChain(78)->addButton("at 79");
    at79->addButton("at 80");
    EXPECT_EQ(described(), std::vector<std::string>{"at 79"});
    EXPECT_FALSE(AX::press("at 80"));

    center->clear();
    center->addChain(120);
    EXPECT_EQ(AX::roleCounts("com.apple.notificationcenterui")["AXGroup"], 79);
    // The application, then groups of one button each: 1 + 2 · 9 999 elements, and one more.
    center->clear();
    for (int i = 0; i < 12'500; ++i)
        center->add({.role = "AXGroup"})->addButton(std::to_string(i));
    const auto found = described();
    EXPECT_EQ(found.size(), 9'999u);
    EXPECT_EQ(found.back(), "9998");
    EXPECT_TRUE(AX::press("9998"));
    EXPECT_FALSE(AX::press("9999"));

    // Over all branches of a cycle, which is endless otherwise.
    auto cyclic = desktop.launch("com.example.cycle");
    cyclic->set(Attribute::children, std::vector<ElementRef>{cyclic, cyclic});
    EXPECT_EQ(AX::roleCounts("com.example.cycle"), (std::map<std::string, int>{{"AXApplication", 60'000}}));
}

TEST_F(AXTest, aWalkOfAnApplicationThatHardlyAnswersEnds) {
    Loop loop;
    for (int i = 0; i < 500; ++i)
        center->addButton("b");
    for (const auto each : {std::chrono::milliseconds(4), std::chrono::milliseconds(50)}) {
        desktop.beforeRead([&] { loop.clock.blockFor(each); });
        const auto seen = described().size();
        EXPECT_GT(seen, 0u);
        EXPECT_EQ(seen == 500, each.count() == 4) << seen;
    }
}

TEST(Letters, bytesThatAreNotUTF8StayAsTheyAre) {
    EXPECT_EQ(lowerCased("A\xC3\x89\xFF"), "a\xC3\xA9\xFF");
    // An overlong A, and a surrogate.
    for (const std::string broken : {"\xE0\x81\x81", "\xED\xA0\x80"})
        EXPECT_EQ(lowerCased(broken), broken);
}

TEST_F(AXTest, scanAllAppsSearchesEverythingOutsideMenus) {
    auto app = desktop.launch("com.example.app", 77);
    app->add({.role = "AXMenuBar", .title = "Needle"})->add({.role = "AXMenuItem", .title = "Needle"});
    app->add({.role = "AXGroup"})->add({.role = "AXMenu"})->add({.role = "AXButton", .title = "needle"});
    app->add({.role = "AXButton", .title = "the nee", .description = "dle"});
    app->add({.role = "AXButton", .title = "x", .description = "A NEEDLE", .value = "v"});
    desktop.launch("")->addText("needle");

    const auto found = AX::scanAllApps("nEEdle");
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].pid, 77);
    EXPECT_EQ(found[0].description, "A NEEDLE");
    EXPECT_EQ(AX::scanAllApps("the nee dle").size(), 1u); // joined by blanks
    EXPECT_EQ(AX::scanAllApps("", "com.example.app").size(), 4u);
    EXPECT_EQ(AX::scanAllApps("", "com.example").size(), 0u);
}

} // namespace
} // namespace velto::test
