// The telephony of a call on the real phone app, over a real accessibility bus.
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/telephony/AX.h"
#include "VeltoShared/telephony/Telephony.h"
#include "rehearsal/PhoneRegistration.h"
#include "tests/desktop/DesktopFixture.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>

#include <algorithm>
#include <csignal>
#include <fstream>

namespace velto::test {
namespace {

constexpr const char* kScenario = R"({"name":"n","about":"a","number":"1","goal":"g","ends":"agent",
  "ringing":0.2,"patience":60,"lines":[{"mark":1,"side":"callee","text":"Hello?"},
  {"mark":2,"side":"agent","text":"Bye."}]})";

struct PhoneAppTest : DesktopTest {
    PhoneAppTest() : DesktopTest({.accessibility = true, .display = true}) {
        MainThread::install(main.get_executor());
        // Characters that mean something to one of those who read the command line.
        const auto there = folder() / "a=b \"$HOME\" `c` \\d %u";
        std::filesystem::create_directory(there);
        std::filesystem::create_symlink(VELTO_PHONE, there / "velto-phone");
        std::ofstream(there / "scenario.json") << kScenario;
        const auto folders = desktop().environment();
        const rehearsal::Environment its{
            {"PULSE_SERVER", "unix:/nowhere"},
            {"VELTO_PHONE_LINE", "rehearsal:" + (there / "scenario.json").string()}};
        rehearsal::registerPhone({there / "velto-phone", its}, folders).value();
        EXPECT_FALSE(rehearsal::registerPhone({there / "velto\nphone", {}}, folders));
    }

    bool dial(const std::string& number) {
        bool active = false;
        asio::co_spawn(main, Telephony::dial(number, [](const std::string&) {}),
                       [&](const std::exception_ptr&, bool answer) { active = answer; });
        main.restart();
        main.run();
        return active;
    }

    asio::io_context main{1};
};

// All in one: GIO looks for a process's folders only once.
TEST_F(PhoneAppTest, TheNumberIsCalledWhateverWasOfferedAndWhoeverWasKilledBefore) {
    ASSERT_TRUE(dial("5551234"));
    const auto pid = *AX::notificationCenterPID();
    ::kill(pid, SIGKILL);
    EXPECT_TRUE(eventually([] { return !Telephony::callActive(); }));
    ASSERT_TRUE(dial("5551234"));
    EXPECT_NE(AX::notificationCenterPID(), pid);
    EXPECT_TRUE(Telephony::hangup());
    for (const auto* number : {"*31#5551234", "5550002", "5550003"}) {
        platform().workspace->openURL("tel-phoneapp:5559999");
        ASSERT_TRUE(eventually([] { return std::ranges::count(buttons(), "Call") == 1; }));
        ASSERT_TRUE(dial(number));
        EXPECT_EQ(std::ranges::count(AX::texts(), number), 1) << ::testing::PrintToString(AX::texts());
        EXPECT_TRUE(eventually(Telephony::callAnswered));
        EXPECT_FALSE(shows("Call"));
        EXPECT_TRUE(Telephony::hangup());
        EXPECT_FALSE(Telephony::callActive());
    }
}

} // namespace
} // namespace velto::test
