// Reading and pressing the elements of a program on a real accessibility bus, whatever shape they have.
#include "VeltoShared/telephony/AX.h"
#include "tests/desktop/DesktopFixture.h"

namespace velto::test {
namespace {

TEST_F(DesktopTest, AnElementsRoleSaysWhereItsTextsAre) {
    const auto target = launchTarget(R"({"role": 75, "name": "phone", "children": [
        {"role": 43, "name": "named", "description": "tip", "at": [30, -40]},
        {"role": 43, "description": "described"},
        {"role": 43},
        {"role": 29, "name": "label", "text": "label"},
        {"role": 29, "text": "only text"},
        {"role": 39, "name": "group", "description": "about"},
        {"role": 61, "text": "line", "name": "field"},
        {"role": 61, "text": "lines", "multiLine": true},
        {"role": 51, "value": 0.5, "name": "volume"},
        {"role": 101, "name": "note"},
        {"role": 4711, "name": "later"},
        {"role": 39, "hidden": true, "children": [{"role": 43, "name": "not shown"}]},
        {"role": 43, "hidden": true, "name": "not shown either"}]})");

    ASSERT_EQ(buttons(), (Texts{"named", "described"}));
    const auto placed = AX::buttons();
    EXPECT_EQ(placed[0].x, 30);
    EXPECT_EQ(placed[0].y, -40);
    EXPECT_EQ(placed[1].x, 0); // it has no place
    EXPECT_EQ(AX::texts(), (Texts{"label", "only text", "note"}));

    Texts seen;
    for (const auto& info : AX::scanAllApps("", std::string(AX::kPhoneApp)))
        seen.push_back(info.role + "|" + info.title + "|" + info.description + "|" + info.value);
    EXPECT_EQ(seen, (Texts{"AXApplication|phone||", "AXButton|named|named|", "AXButton|described|described|",
                           "AXButton|||", "AXStaticText|||label", "AXStaticText|||only text",
                           "AXGroup|group|about|", "AXTextField|field||line", "AXTextArea|||lines",
                           "AXSlider|volume||", "AXGenericElement|note||", "AXUnknown|later||", "AXGroup|||",
                           "AXButton|||"}));
    const auto volume = accessibility().read(
        std::vector<Accessibility::Request>{{childrenOf(target).at(8), Attribute::value}});
    EXPECT_EQ(std::get<double>(volume[0].value), 0.5);
}

TEST_F(DesktopTest, ATreeThatBreaksHidesNothingElse) {
    auto target = launchTarget(
        R"({"role": 75, "endsAfter": 300, "children": [{"role": 43, "name": "b", "copies": 200}]})");
    const auto before = buttons().size();
    EXPECT_TRUE(before > 0 && before < 200) << before;

    show(target, R"({"role": 75, "children": [
        {"role": 39, "broken": "error", "name": "x", "children": [{"role": 43, "name": "x"}]},
        {"role": 39, "broken": "types", "name": "x", "children": [{"role": 43, "name": "x"}]},
        {"role": 43, "broken": "types"}, {"role": 43, "name": "whole"}, "nowhere"]})");
    EXPECT_EQ(buttons(), Texts{"whole"});

    const std::string large(1'000'000, 'x');
    show(target, R"({"role": 75, "children": [{"role": 43, "name": "\u00e9)" + large + R"("},
        {"role": 43, "name": "a\ttab, \ud83d\ude00"}]})");
    EXPECT_EQ(buttons(), (Texts{"\u00e9" + large, "a\ttab, \U0001F600"}));
}

TEST_F(DesktopTest, AnElementIsPressedByTheActionThatAClickHas) {
    auto target = launchTarget(R"({"role": 75, "children": [
        {"id": "qt", "role": 43, "name": "Qt", "actions": ["SetFocus", "Press"]},
        {"id": "gtk", "role": 43, "name": "GTK", "actions": ["click"]},
        {"id": "other", "role": 43, "name": "Other", "actions": ["Show", "Activate"]},
        {"role": 43, "name": "Menu", "actions": ["ShowMenu", "SetFocus"]},
        {"role": 43, "name": "Mute"},
        {"role": 43, "name": "No", "actions": ["Press"], "onPress": "refuse"},
        {"role": 43, "name": "Off", "actions": ["Press"], "disabled": true}]})");
    for (const auto& [name, action] : {std::pair("qt", "Press"), {"gtk", "click"}, {"other", "Activate"}}) {
        EXPECT_TRUE(AX::press(name));
        EXPECT_EQ(nextLine(target), std::string("pressed ") + name + " by " + action);
    }
    for (const auto* name : {"Menu", "Mute", "No", "Off", "Absent"})
        EXPECT_FALSE(AX::press(name)) << name;

    // Between the reading and the press.
    show(target, kInCall);
    const auto end = childrenOf(target).at(0);
    show(target,
         R"({"role": 75, "children": [{"id": "end", "role": 43, "actions": ["Press"], "disabled": true}]})");
    EXPECT_FALSE(accessibility().press(end));
    show(target, R"({"role": 75})");
    EXPECT_FALSE(accessibility().press(end));
    show(target, kInCall);
    EXPECT_TRUE(accessibility().press(end));
    EXPECT_EQ(nextLine(target), "pressed end by Press");
    EXPECT_FALSE(accessibility().press(accessibility().application(target.process.pid())));
    EXPECT_FALSE(accessibility().press(nullptr));
}

TEST_F(DesktopTest, ApplicationsAreListedInOrderAndGoneWhenTheyEnd) {
    auto first = launchTarget(kInCall);
    // It shows elements of others, too.
    auto second = launchTarget(R"({"role": 75, "children": [{"role": 29, "name": "second"}, ")" + first.name +
                               R"( end", ":9.99 end"]})");
    std::vector<std::pair<std::string, pid_t>> listed;
    for (const auto& application : workspace().runningApplications())
        listed.emplace_back(application.bundleID, application.pid);
    EXPECT_EQ(listed, (std::vector<std::pair<std::string, pid_t>>{
                          {"com.apple.mobilephone", first.process.pid()},
                          {"com.apple.notificationcenterui", first.process.pid()},
                          {"com.apple.mobilephone", second.process.pid()},
                          {"com.apple.notificationcenterui", second.process.pid()}}));
    EXPECT_EQ(AX::texts(), Texts{"0:07"});
    EXPECT_EQ(AX::scanAllApps("second", std::string(AX::kPhoneApp)).size(), 1u);
    EXPECT_EQ(AX::scanAllApps("end", std::string(AX::kPhoneApp)).size(), 2u);
    EXPECT_TRUE(accessibility().press(childrenOf(second).at(1)));
    EXPECT_EQ(nextLine(first), "pressed end by Press");

    first.process.kill();
    EXPECT_EQ(buttons(), Texts{});
    EXPECT_TRUE(eventually([] { return AX::texts() == Texts{"second"}; }));
    EXPECT_EQ(reports(), Texts{});
}

} // namespace
} // namespace velto::test
