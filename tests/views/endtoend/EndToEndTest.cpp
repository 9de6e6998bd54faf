// The real program with its windows from the first start to a deleted call, by keyboard, pointer and the
// accessibility bus; and what it shows on bad days.
#include "VeltoPlatform/linux/Bus.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"
#include "rehearsal/director/Verdict.h"
#include "rehearsal/process/TextFile.h"
#include "tests/views/endtoend/Desk.h"

#include <QClipboard>
#include <QGuiApplication>

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <set>

namespace velto::test {
namespace {

const rehearsal::GuardianLink* guardian = nullptr;

/// The texts that must stand in each place, of texts.txt.
std::map<std::string, std::vector<std::string>> textsOfPlaces() {
    std::map<std::string, std::vector<std::string>> places;
    std::ifstream list(VELTO_ENDTOEND "/texts.txt");
    for (std::string line; std::getline(list, line);) {
        const auto bar = line.find(" | ");
        places[line.substr(0, bar)].push_back(line.substr(bar + 3));
    }
    return places;
}

/// Certain to be missing then, whatever is installed on this computer.
void switchAccessibilityOff() {
    const auto bus = Bus::open(Bus::sessionAddress(), std::chrono::seconds(5));
    const auto request =
        bus->method("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set");
    sd_bus_message_append(request.get(), "ssv", "org.a11y.Status", "IsEnabled", "b", 0);
    ASSERT_TRUE(bus->call(request, std::chrono::seconds(5)));
}

void judge(Desk& desk) {
    if (::testing::Test::HasFailure())
        std::cout << rehearsal::readFile(desk.surroundings.applicationLog()).value_or("");
    EXPECT_EQ(desk.watchdog->faults(), std::vector<std::string>());
}

TEST(WindowsTest, FromTheFirstStartToADeletedCall) {
    Desk desk(*guardian, "a");
    const auto places = textsOfPlaces();
    std::set<std::string> visited;
    const auto checkTexts = [&](const std::string& place) {
        visited.insert(place);
        ASSERT_TRUE(places.contains(place)) << place;
        for (const auto& text : desk.missing(places.at(place)))
            ADD_FAILURE() << place << " lacks: " << text;
    };
    switchAccessibilityOff();
    ASSERT_TRUE(desk.start());
    desk.watchdog->step("first start");
    checkTexts("Readiness, not ready");
    checkTexts("Main window, not ready");
    const auto& key = desk.keys.all().at(VoiceProvider::gemini);
    ASSERT_TRUE(desk.enter("Gemini"));
    desk.type("   " + key + " ");
    EXPECT_TRUE(desk.press("Save"));
    checkTexts("Readiness, key stored");
    EXPECT_EQ(KeychainStore::get(SecretKey::geminiAPIKey), key);
    checkTexts("Main window, no accessibility");
    EXPECT_TRUE(desk.press("Enable"));
    EXPECT_TRUE(desk.goes("AXButton", "Enable"));
    ASSERT_TRUE(desk.enter("OpenAI"));
    desk.type("no such key\n");
    EXPECT_TRUE(desk.comes("not validated"));

    desk.watchdog->step("readiness, further down");
    desk.scrollDown();
    checkTexts("Readiness, further down");
    EXPECT_TRUE(desk.press("Use", "AXComboBox"));
    checkTexts("Readiness, the providers");
    desk.key("Escape");
    EXPECT_TRUE(desk.press("General", "AXRadioButton"));
    checkTexts("General");
    desk.key("w", "Control_L");
    EXPECT_TRUE(desk.goes("AXRadioButton", "General"));

    desk.watchdog->step("pasting and typing");
    ASSERT_TRUE(desk.enter("Goal"));
    desk.key("a", "Control_L");
    const std::string long10k(10'240, 'x');
    desk.paste(long10k);
    EXPECT_TRUE(desk.comes(long10k));
    desk.key("a", "Control_L");
    desk.type("offer a newspaper for a month");
    ASSERT_TRUE(desk.enter("Number"));
    desk.type("+15550125");
    checkTexts("Main window, filled in");

    // Dialling looks at the phone app on the main thread; one that is just starting is waited for as long as
    // the accessibility backend's patience.
    desk.watchdog->step("dialling", rehearsal::kLongestHold);
    ASSERT_TRUE(desk.press("Call with AI"));
    checkTexts("Main window, in a call");
    checkTexts("Transcript");
    desk.watchdog->step("call");
    checkTexts("Main window, after a call");

    ASSERT_TRUE(desk.press("Settings"));
    ASSERT_TRUE(desk.press("Debug", "AXRadioButton"));
    for (const std::string pane : {"Native", "Recordings", "Diagnostics", "Routing", "Drivers", "History"}) {
        desk.watchdog->step(pane);
        EXPECT_TRUE(desk.press("Pane", "AXComboBox") && desk.press(pane, "AXGroup")) << pane;
        checkTexts(pane);
        if (pane == "Native") {
            desk.scrollDown();
            checkTexts("Native, further down");
        }
        if (pane == "Recordings") {
            EXPECT_TRUE(desk.press("Record downlink (5 min)"));
            EXPECT_TRUE(desk.press("Stop recording"));
            checkTexts("Recordings, with one");
        }
    }
    EXPECT_TRUE(desk.press("+15550125", "AXGroup"));
    checkTexts("Transcript");
    EXPECT_TRUE(desk.press("Done"));
    EXPECT_TRUE(desk.goes("AXButton", "Done"));
    const auto row = desk.find("AXGroup", "+15550125");
    ASSERT_TRUE(row);
    desk.click(row->at.x + 60, row->at.y + 14, Desk::Button::right);
    EXPECT_TRUE(desk.press("Delete", "AXMenuItem"));
    EXPECT_TRUE(desk.comes("(no calls yet)"));
    EXPECT_EQ(rehearsal::readFile(desk.surroundings.recordings().parent_path() / "history.json"), "[]");
    for (const auto& [place, texts] : places)
        EXPECT_TRUE(visited.contains(place)) << "nobody has looked at: " << place;
    judge(desk);

    desk.end();
    ASSERT_TRUE(desk.start());
    EXPECT_TRUE(desk.comes("AI voice agent for cellular calls"));
    EXPECT_FALSE(desk.find("AXRadioButton", "General")) << "the checklist of a first run came again";
}

TEST(WindowsTest, WhatIsMissingIsToldAndNothingFreezes) {
    Desk desk(*guardian, "b");
    desk.session->killKeyring();
    ASSERT_TRUE(desk.start({{"PULSE_SERVER", "unix:/nowhere"}}));
    desk.watchdog->step("no sound, no keyring");
    EXPECT_TRUE(desk.comes("Add a Gemini or OpenAI key in Settings → Readiness."));
    EXPECT_TRUE(desk.comes("Audio bridge: Bridge devices not installed — Settings → Debug → Drivers"));
    EXPECT_TRUE(desk.press("Settings"));
    EXPECT_TRUE(desk.press("Allow"));
    EXPECT_TRUE(desk.comes("no sound server: Connection refused"));
    ASSERT_TRUE(desk.enter("Gemini"));
    desk.type("a key");
    EXPECT_TRUE(desk.press("Save"));
    desk.key("w", "Control_L"); // closed in the middle of it
    EXPECT_TRUE(desk.goes("AXRadioButton", "General"));
    EXPECT_TRUE(desk.comes("AI key missing"));
    judge(desk);
    desk.end();

    ASSERT_TRUE(desk.start({{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"}}));
    desk.watchdog->step("no bus at all");
    EXPECT_TRUE(desk.eventually([&] {
        return rehearsal::readFile(desk.surroundings.applicationLog())
                   .value_or("")
                   .find("accessibility trusted=false") != std::string::npos;
    }));
    judge(desk);
}

/// Another program that has copied something: its input.
int copy(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const std::string text(std::istreambuf_iterator<char>(std::cin), {});
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
    std::cout << "{}" << std::endl;
    return QGuiApplication::exec();
}

} // namespace
} // namespace velto::test

int main(int argc, char** argv) {
    if (argc == 2 && argv[1] == std::string_view("copy"))
        return velto::test::copy(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return velto::rehearsal::runGuarded({}, [](const velto::rehearsal::GuardianLink& link) {
        velto::test::guardian = &link;
        return RUN_ALL_TESTS();
    });
}
