// The real program with its windows from the first start to a deleted call, by keyboard, pointer and the
// accessibility bus; and what it shows on bad days.
#include "VeltoPlatform/linux/Bus.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"
#include "rehearsal/director/Verdict.h"
#include "rehearsal/process/TextFile.h"
#include "tests/views/endtoend/Desk.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>

namespace velto::test {
namespace {

const rehearsal::GuardianLink* guardian = nullptr;

/// The lines of texts.txt for one place, all of which must be there.
void checkTexts(Desk& desk, const std::string& place) {
    std::ifstream list(VELTO_ENDTOEND "/texts.txt");
    std::vector<std::string> texts;
    for (std::string line; std::getline(list, line);)
        if (line.starts_with(place + " | "))
            texts.push_back(line.substr(place.size() + 3));
    EXPECT_FALSE(texts.empty()) << place;
    std::vector<std::string> missing;
    desk.eventually([&] { return (missing = desk.missing(texts)).empty(); });
    for (const auto& text : missing)
        ADD_FAILURE() << place << " lacks: " << text;
}

void switchAccessibility(bool on) {
    const auto bus = Bus::open(Bus::sessionAddress(), std::chrono::seconds(5));
    const auto request =
        bus->method("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set");
    sd_bus_message_append(request.get(), "ssv", "org.a11y.Status", "IsEnabled", "b", on ? 1 : 0);
    ASSERT_TRUE(bus->call(request, std::chrono::seconds(5)));
}

void judge(Desk& desk) {
    if (::testing::Test::HasFailure())
        std::cout << rehearsal::readFile(desk.surroundings.applicationLog()).value_or("");
    std::cout << desk.watchdog->table();
    for (const auto& fault : desk.watchdog->faults())
        ADD_FAILURE() << fault;
}

bool pick(Desk& desk, const char* picker, const char* choice) {
    return desk.press(picker, "AXComboBox") && desk.press(choice, "AXGroup");
}

std::size_t calls(Desk& desk) {
    std::size_t count = 0;
    desk.asked("history", [&](const boost::json::object& reply) {
        count = reply.at("calls").as_array().size();
        return true;
    });
    return count;
}

TEST(WindowsTest, FromTheFirstStartToADeletedCall) {
    Desk desk(*guardian, "a");
    // Certain to be missing, whatever is installed on this computer.
    switchAccessibility(false);
    ASSERT_TRUE(desk.start());
    desk.watchdog->step("first start");
    checkTexts(desk, "Readiness, not ready");
    checkTexts(desk, "Main window, not ready");
    desk.picture("readiness-not-ready");
    const auto& key = desk.keys.all().at(VoiceProvider::gemini);
    ASSERT_TRUE(desk.enter("Gemini"));
    desk.screen->type("   " + key + " ");
    desk.picture("key-typed");
    EXPECT_TRUE(desk.press("Save"));
    EXPECT_TRUE(desk.comes("valid"));
    EXPECT_EQ(KeychainStore::get(SecretKey::geminiAPIKey), key);
    checkTexts(desk, "Readiness, key stored");
    checkTexts(desk, "Main window, no accessibility");
    EXPECT_TRUE(desk.press("Enable"));
    EXPECT_TRUE(desk.eventually([&] { return !desk.find("AXButton", "Enable"); }));
    ASSERT_TRUE(desk.enter("OpenAI"));
    desk.screen->type("no such key\n");
    EXPECT_TRUE(desk.comes("not validated"));
    desk.picture("key-stored");
    desk.scrollDown();
    checkTexts(desk, "Readiness, further down");
    EXPECT_TRUE(desk.press("Use", "AXComboBox"));
    checkTexts(desk, "Readiness, the providers");
    desk.picture("readiness-further-down");
    desk.screen->key("Escape");

    EXPECT_TRUE(desk.press("General", "AXRadioButton"));
    checkTexts(desk, "General");
    desk.picture("general");
    desk.screen->key("w", true);
    EXPECT_TRUE(desk.eventually([&] { return !desk.find("AXRadioButton", "General"); }));

    ASSERT_TRUE(desk.enter("Goal"));
    desk.screen->key("a", true);
    const std::string long10k(10'240, 'x');
    desk.screen->paste(long10k);
    EXPECT_TRUE(desk.comes(long10k));
    desk.picture("goal-pasted");
    desk.screen->key("a", true);
    desk.screen->type("offer a newspaper for a month");
    ASSERT_TRUE(desk.enter("Number"));
    desk.screen->type("+15550125");
    checkTexts(desk, "Main window, key stored");
    EXPECT_TRUE(desk.comes("offer a newspaper for a month"));
    EXPECT_TRUE(desk.comes("+15550125"));

    // Dialling looks at the phone app on the main thread; one that is just starting is waited for as long as
    // the accessibility backend's patience.
    desk.watchdog->step("dialling", rehearsal::kLongestHold);
    ASSERT_TRUE(desk.press("Call with AI"));
    EXPECT_TRUE(desk.comes("Session: live"));
    checkTexts(desk, "Main window, in a call");
    checkTexts(desk, "Transcript");
    desk.picture("call");
    EXPECT_TRUE(desk.comes("Session: ended"));
    EXPECT_TRUE(desk.comes("Redial +15550125"));
    EXPECT_EQ(calls(desk), 1U);
    desk.picture("ended");

    ASSERT_TRUE(desk.press("Settings"));
    ASSERT_TRUE(desk.press("Debug", "AXRadioButton"));
    for (const char* pane : {"Native", "Recordings", "Diagnostics", "Routing", "Drivers", "History"}) {
        EXPECT_TRUE(pick(desk, "Pane", pane)) << pane;
        checkTexts(desk, pane);
        desk.picture(std::string("pane-") + pane);
        if (pane == std::string("Native")) {
            desk.scrollDown();
            checkTexts(desk, "Native, further down");
        }
        if (pane == std::string("Recordings")) {
            EXPECT_TRUE(desk.press("Record downlink (5 min)"));
            EXPECT_TRUE(desk.press("Stop recording"));
            checkTexts(desk, "Recordings, with one");
        }
    }
    EXPECT_TRUE(desk.press("+15550125", "AXGroup"));
    EXPECT_TRUE(desk.find("AXWindow", "+15550125"));
    checkTexts(desk, "Transcript");
    desk.picture("transcript");
    EXPECT_TRUE(desk.press("Done"));
    EXPECT_TRUE(desk.eventually([&] { return !desk.find("AXButton", "Done"); }));
    const auto row = desk.find("AXGroup", "+15550125");
    ASSERT_TRUE(row);
    desk.screen->click(row->at.x + 60, row->at.y + 14, Screen::Button::right);
    EXPECT_TRUE(desk.press("Delete", "AXMenuItem"));
    EXPECT_TRUE(desk.comes("(no calls yet)"));
    EXPECT_EQ(calls(desk), 0U);
    EXPECT_EQ(rehearsal::readFile(desk.surroundings.recordings().parent_path() / "history.json"), "[]");
    desk.picture("deleted");
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
    desk.picture("no-sound");
    ASSERT_TRUE(desk.enter("Gemini"));
    desk.screen->type("a key");
    EXPECT_TRUE(desk.press("Save"));
    desk.screen->key("w", true); // closed in the middle of it
    EXPECT_TRUE(desk.eventually([&] { return !desk.find("AXRadioButton", "General"); }));
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
    desk.picture("no-bus");
    judge(desk);
}

} // namespace
} // namespace velto::test

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    return velto::rehearsal::runGuarded({}, [](const velto::rehearsal::GuardianLink& link) {
        velto::test::guardian = &link;
        return RUN_ALL_TESTS();
    });
}
