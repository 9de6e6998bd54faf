// The telephony of a call on the real phone app, over a real accessibility bus.
#include "VeltoPlatform/linux/LinuxPlatform.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/telephony/AX.h"
#include "VeltoShared/telephony/CallTimer.h"
#include "VeltoShared/telephony/Telephony.h"
#include "rehearsal/PhoneRegistration.h"
#include "rehearsal/PrivateDesktop.h"
#include "rehearsal/process/TextFile.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestComputer.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <thread>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr const char* kScenario = R"({"name":"n","about":"a","number":"1","goal":"g","ends":"agent",
  "ringing":0.2,"patience":60,"lines":[{"mark":1,"side":"callee","text":"Hello?"},
  {"mark":2,"side":"agent","text":"Bye."}]})";

/// A desktop with the phone app registered. One for all tests: GIO looks for a process's folders only once.
struct Session {
    Session() {
        const auto folders = *rehearsal::makePrivateFolders(folder.path());
        auto started = rehearsal::PrivateDesktop::start(folder.path(), folders,
                                                        {.accessibility = true, .display = true});
        if (!started)
            throw std::runtime_error(started.error().description);
        desktop = std::move(*started);
        // Characters that mean something to one of those who read the command line.
        const auto there = folder.path() / "a=b \"$HOME\" `c` \\d %u";
        std::filesystem::create_directory(there);
        std::filesystem::create_symlink(VELTO_PHONE, there / "velto-phone");
        const auto scenario = there / "scenario.json";
        const rehearsal::PhoneRegistration phone{
            there / "velto-phone",
            {{"DISPLAY", desktop->display()}, {"VELTO_PHONE_LINE", "rehearsal:" + scenario.string()}}};
        if (!rehearsal::writePrivateFile(scenario, kScenario))
            throw std::runtime_error("no scenario");
        rehearsal::registerPhone(phone, folders).value();
        EXPECT_FALSE(rehearsal::registerPhone({there / "velto\nphone", {}}, folders));
        environment.set(desktop->environment());
        environment.set("PULSE_SERVER", "unix:/nowhere");
    }

    TemporaryFolder folder;
    ScopedEnvironment environment;
    std::unique_ptr<rehearsal::PrivateDesktop> desktop;
};

// Not repeatable within a process, for the same reason.
class PhoneAppTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { session = std::make_unique<Session>(); }
    static void TearDownTestSuite() { session.reset(); }

    PhoneAppTest() { MainThread::install(main.get_executor()); }
    ~PhoneAppTest() override {
        if (const auto pid = AX::notificationCenterPID()) {
            ::kill(*pid, SIGKILL);
            comesTrue([] { return !AX::notificationCenterPID(); });
        }
    }

    bool dial(const std::string& number) {
        log.clear();
        std::optional<bool> active;
        asio::co_spawn(main,
                       Telephony::dial(number, [this](std::string line) { log.push_back(std::move(line)); }),
                       [&](const std::exception_ptr&, bool answer) { active = answer; });
        main.restart();
        main.run();
        return active.value_or(false);
    }
    static bool comesTrue(const std::function<bool()>& isSo) {
        const auto deadline = SteadyClock::now() + 20s;
        while (!isSo()) {
            if (SteadyClock::now() > deadline)
                return false;
            std::this_thread::sleep_for(20ms);
        }
        return true;
    }
    static bool shown(const std::string& text) {
        const auto texts = AX::texts();
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }
    static std::vector<std::string> buttons() {
        std::vector<std::string> names;
        for (const auto& button : AX::buttons())
            names.push_back(button.description);
        return names;
    }
    static inline std::unique_ptr<Session> session;
    LinuxPlatform computer{"phone_app_test", AppPaths::bundleID, [](const std::string&) {}};
    asio::io_context main{1};
    std::vector<std::string> log;
};

TEST_F(PhoneAppTest, ACallIsPlacedSeenAnsweredAndHungUp) {
    EXPECT_TRUE(AX::trusted());
    EXPECT_FALSE(Telephony::callActive());
    EXPECT_TRUE(Telephony::hangup()) << "there is nothing to hang up";

    ASSERT_TRUE(dial(" *31#5551234\t")) << ::testing::PrintToString(log);
    ASSERT_EQ(log.size(), 3U) << ::testing::PrintToString(log);
    EXPECT_EQ(log[0], "dial: opening tel-phoneapp:*31#5551234");
    EXPECT_TRUE(log[1].starts_with("dial: pressed Call after ")) << log[1];
    EXPECT_EQ(log[2], "dial: call active");
    EXPECT_TRUE(shown("*31#5551234")) << "letter for letter, through the handler";

    ASSERT_TRUE(comesTrue([] { return Telephony::callAnswered(); }));
    const auto texts = AX::texts();
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), showsCallTimer)) << ::testing::PrintToString(texts);
    EXPECT_EQ(AX::texts(std::string(AX::kPhoneApp)).empty(), false);
    const auto all = AX::buttons();
    const auto end =
        std::find_if(all.begin(), all.end(), [](const auto& one) { return one.description == "End"; });
    ASSERT_NE(end, all.end());
    EXPECT_GT(end->x, 640) << "the banner is at the right of the screen";
    EXPECT_EQ(
        std::count_if(all.begin(), all.end(), [](const auto& one) { return one.description == "Call"; }), 0);
    EXPECT_GT(AX::roleCounts(AX::kPhoneApp)["AXButton"], 0);
    const auto found = AX::scanAllApps("eNd", std::string(AX::kNotificationCenter));
    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.front().pid, AX::notificationCenterPID());

    EXPECT_FALSE(AX::press("no such button"));
    EXPECT_TRUE(Telephony::hangup());
    EXPECT_FALSE(Telephony::callActive());
    EXPECT_FALSE(Telephony::callAnswered());
}

TEST_F(PhoneAppTest, AnOlderOfferIsNotCalledInPlaceOfTheNumber) {
    for (const auto* number : {"5550001", "5550002", "5550003"}) {
        platform().workspace->openURL("tel-phoneapp:5559999");
        ASSERT_TRUE(comesTrue([] {
            const auto names = buttons();
            return std::count(names.begin(), names.end(), "Call") == 1;
        }));
        ASSERT_TRUE(dial(number));
        EXPECT_TRUE(shown(number)) << ::testing::PrintToString(AX::texts());
        EXPECT_TRUE(Telephony::hangup());
    }
}

TEST_F(PhoneAppTest, AKilledPhoneHasNoCallAndTheNextNumberStartsAnother) {
    ASSERT_TRUE(dial("5551234"));
    const auto pid = *AX::notificationCenterPID();
    ::kill(pid, SIGKILL);
    EXPECT_TRUE(comesTrue([] { return !Telephony::callActive(); }));
    ASSERT_TRUE(dial("5551234")) << ::testing::PrintToString(log);
    EXPECT_NE(AX::notificationCenterPID(), pid);
    EXPECT_TRUE(Telephony::hangup());
}

} // namespace
} // namespace velto::test
