// Programs, registry, launcher and buses that stop, go on, end, start again or were never there.
#include "VeltoPlatform/linux/ProcessFiles.h"
#include "VeltoShared/telephony/AX.h"
#include "VeltoShared/telephony/Telephony.h"
#include "tests/desktop/DesktopFixture.h"

#include <algorithm>
#include <csignal>
#include <thread>

namespace velto::test {
namespace {

using namespace std::chrono_literals;

struct AccessibilityStallTest : DesktopTest {
    /// Runs it and answers the same, in time: half a second is promised, the rest is for a busy machine. A
    /// call would wait for 25 s.
    template <class Operation>
    static auto soon(Operation operation) {
        const auto begin = std::chrono::steady_clock::now();
        const auto answer = operation();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
        return answer;
    }

    /// The process of this session that runs a program, below the launcher or a bus; 0: none.
    pid_t processOf(const std::string& name) {
        // All that the session started has its bus in the environment.
        for (const auto pid : ProcessFiles::own())
            if (pid != desktop().bus()->pid() && ProcessFiles::executable(pid) == name &&
                readFile("/proc/" + std::to_string(pid) + "/environ").find(desktop().busAddress()) !=
                    std::string::npos)
                return pid;
        ADD_FAILURE() << "no process of " << name;
        return 0;
    }

    static void signal(pid_t process, int number) {
        if (process > 1)
            ::kill(process, number);
    }
    static bool pressEnd() { return AX::press("End"); }
    bool itAnswersAgain() {
        return eventually([this] {
            AX::buttons();
            return reports().back().ends_with("answers again");
        });
    }
};

TEST_F(AccessibilityStallTest, AStoppedProgramAnswersWhatItLastShowedUntilItGoesOn) {
    auto unseen = launchTarget(R"({"role": 75, "children": [{"role": 29, "name": "unseen"}]})");
    unseen.process.signal(SIGSTOP);
    EXPECT_FALSE(soon(Telephony::callActive)); // it never answered
    unseen.process.kill();
    ASSERT_TRUE(eventually([this] { return workspace().runningApplications().empty(); }));

    auto target = launchTarget(kInCall);
    ASSERT_TRUE(Telephony::callAnswered());
    const auto before = reports().size();
    target.process.signal(SIGSTOP);
    EXPECT_TRUE(soon(Telephony::callAnswered));
    EXPECT_FALSE(soon(pressEnd));
    EXPECT_TRUE(soon(Telephony::callActive));
    target.process.signal(SIGCONT);
    EXPECT_TRUE(eventually(pressEnd));
    EXPECT_EQ(nextLine(target), "pressed end by Press");
    const auto who =
        "accessibility: velto-scripted-target (pid " + std::to_string(target.process.pid()) + ") ";
    const auto all = reports();
    EXPECT_EQ(std::vector(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
              (Texts{who + "does not answer; going by what it last showed", who + "answers again"}));

    target.process.signal(SIGSTOP);
    EXPECT_TRUE(soon(Telephony::callActive));
    target.process.kill();
    EXPECT_TRUE(eventually([] { return !Telephony::callActive(); }));
}

TEST_F(AccessibilityStallTest, AProgramThatStopsInTheMiddleOfALookHasNotEndedItsCall) {
    auto target = launchTarget(kInCall);
    ASSERT_TRUE(Telephony::callActive());
    for (const int answers : {0, 1, 2, 3, 4, 5, 6, 8}) {
        show(target, std::string(kInCall).insert(1, R"("stopsAfter": )" + std::to_string(answers) + ", "));
        for (int look = 0; look < 3; ++look)
            EXPECT_TRUE(soon(Telephony::callActive)) << answers << " answers";
        target.process.signal(SIGCONT);
        show(target, kInCall);
        ASSERT_TRUE(eventually([] { return AX::texts().size() == 1; }));
    }
}

TEST_F(AccessibilityStallTest, WhatIsNeverAnsweredIsWaitedForOnce) {
    auto target = launchTarget(R"({"role": 75, "name": "phone", "children": [
        {"id": "odd", "role": 43, "name": "Odd", "unanswered": "GetExtents", "actions": ["Press"]},
        {"id": "end", "role": 43, "name": "End", "actions": ["Press"]}]})");
    EXPECT_TRUE(soon(Telephony::callActive));
    // It answers everything else: what it shows from here on is seen.
    show(target, R"({"role": 75, "name": "phone", "children": [
        {"id": "odd", "role": 43, "name": "Odd", "unanswered": "GetExtents", "actions": ["Press"]}]})");
    EXPECT_TRUE(eventually([] { return !Telephony::callActive(); }));
    const auto lines = reports().size();
    for (int look = 0; look < 5; ++look) {
        const auto buttons = soon(AX::buttons);
        ASSERT_EQ(buttons.size(), 1U);
        EXPECT_EQ(buttons.front().description, "Odd");
    }
    EXPECT_EQ(reports().size(), lines);
    EXPECT_TRUE(eventually([] { return AX::press("Odd"); }));
}

TEST_F(AccessibilityStallTest, ARegistryThatWasKilledTakesNobodyWithIt) {
    auto target = launchTarget(kInCall);
    ASSERT_TRUE(Telephony::callActive());
    signal(processOf("at-spi2-registryd"), SIGKILL);
    for (int look = 0; look < 5; ++look)
        EXPECT_TRUE(soon(Telephony::callActive));
    EXPECT_TRUE(pressEnd());
    auto later = launchTarget(R"({"role": 75, "children": [{"role": 29, "name": "later"}]})");
    EXPECT_TRUE(eventually([this] { return workspace().runningApplications().size() == 4; }));
    EXPECT_TRUE(Telephony::callActive());
    target.process.kill();
    EXPECT_TRUE(eventually([] { return !Telephony::callActive(); }));
}

TEST_F(AccessibilityStallTest, AnUnansweredPressIsNotRepeated) {
    auto target = launchTarget(R"({"role": 75, "children": [
        {"id": "end", "role": 43, "name": "End", "actions": ["Press"], "onPress": "stop"}]})");
    EXPECT_FALSE(soon(pressEnd));
    EXPECT_TRUE(soon(Telephony::callActive));
    EXPECT_FALSE(soon(pressEnd));
    target.process.signal(SIGCONT);
    EXPECT_EQ(nextLine(target), "pressed end by Press");
    EXPECT_TRUE(itAnswersAgain());
    EXPECT_TRUE(hasSaidNothingElse(target));

    // The program goes on, and only this one answer is missing.
    renewBackend();
    show(target, R"({"role": 75, "children": [
        {"id": "end", "role": 43, "name": "End", "actions": ["Press"], "onPress": "later"}]})");
    EXPECT_FALSE(soon(pressEnd));
    EXPECT_EQ(nextLine(target), "pressed end by Press");
    EXPECT_NE(reports().back().find("a press in velto-scripted-target"), std::string::npos);
    EXPECT_TRUE(itAnswersAgain());
    EXPECT_FALSE(pressEnd());
    EXPECT_TRUE(hasSaidNothingElse(target));
    show(target, kInCall);
    EXPECT_TRUE(eventually(pressEnd));
    EXPECT_EQ(nextLine(target), "pressed end by Press");
}

TEST_F(AccessibilityStallTest, NothingWaitsForAStoppedRegistryLauncherOrBus) {
    const auto target = launchTarget(kInCall);
    const std::vector<pid_t> all{desktop().accessibility()->pid(), desktop().bus()->pid(),
                                 processOf("at-spi2-registryd"), processOf("dbus-daemon")};
    std::vector<std::vector<pid_t>> stopped{{all[0]}, {all[1]}, {all[2]}, {all[3]}, all};
    stopped.back().push_back(target.process.pid());
    for (const auto& parts : stopped) {
        SCOPED_TRACE(&parts - stopped.data());
        renewBackend();
        ASSERT_TRUE(Telephony::callAnswered());
        for (const auto part : parts)
            signal(part, SIGSTOP);
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(soon(Telephony::callAnswered));
            EXPECT_TRUE(soon(AX::trusted));
        }
        for (const auto part : parts)
            signal(part, SIGCONT);
        EXPECT_TRUE(eventually([] { return AX::trusted() && pressEnd(); }));
    }
}

TEST_F(AccessibilityStallTest, AStoppedProgramHoldsUpNoOtherThread) {
    auto target = launchTarget(kInCall);
    auto other = launchTarget(R"({"role": 75, "children": [{"role": 39, "copies": 5000}]})");
    ASSERT_TRUE(Telephony::callActive());
    std::thread reader([&] {
        for (int i = 0; i < 3; ++i)
            accessibility().read(std::vector<Accessibility::Request>{
                {accessibility().application(other.process.pid()), Attribute::children}});
        AX::scanAllApps("nothing");
    });
    for (int i = 0; i < 20; ++i) {
        target.process.signal(i % 2 == 0 ? SIGSTOP : SIGCONT);
        EXPECT_TRUE(soon(Telephony::callActive));
        EXPECT_TRUE(soon(AX::trusted));
    }
    reader.join();
}

TEST_F(AccessibilityStallTest, WhatWasSwitchedOffOrEndedIsNotTrustedUntilItIsBack) {
    auto target = launchTarget(kInCall);
    ASSERT_TRUE(AX::trusted());
    const auto session = Bus::open(desktop().busAddress(), kDeadline);
    const auto off =
        session->method("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set");
    sd_bus_message_append(off.get(), "ssv", "org.a11y.Status", "IsEnabled", "b", 0);
    ASSERT_TRUE(session->call(off, kDeadline));
    EXPECT_FALSE(AX::trusted());
    EXPECT_EQ(accessibility().whyNotTrusted(), "accessibility is switched off");
    AX::promptForTrust();
    EXPECT_TRUE(eventually(AX::trusted));
    EXPECT_EQ(accessibility().whyNotTrusted(), "");
    EXPECT_EQ(reports(), Texts{"accessibility: switched on; programs that were open before "
                               "may have to be restarted"});

    // Its bus stays behind, without anybody to ask for it.
    const auto orphan = processOf("dbus-daemon");
    desktop().accessibility()->kill();
    EXPECT_TRUE(eventually([] { return !AX::trusted(); }));
    EXPECT_EQ(accessibility().whyNotTrusted(), "no accessibility bus runs in this session");
    ASSERT_TRUE(desktop().restart());
    EXPECT_TRUE(eventually(AX::trusted));
    auto again = launchTarget(kInCall);
    EXPECT_TRUE(eventually(Telephony::callActive));
    signal(orphan, SIGKILL);
    EXPECT_TRUE(eventually([&] { return ProcessFiles::executable(orphan).empty(); }));

    // The launcher ends with its bus; whoever asks next starts both.
    signal(processOf("dbus-daemon"), SIGKILL);
    EXPECT_TRUE(eventually([] { return !AX::trusted(); }));
    EXPECT_FALSE(Telephony::callActive());
    AX::promptForTrust();
    EXPECT_TRUE(eventually(AX::trusted));
    auto third = launchTarget(kInCall);
    EXPECT_TRUE(eventually(Telephony::callActive));
}

TEST_F(AccessibilityStallTest, AProgramThatHardlyAnswersIsAsGoodAsSilent) {
    const auto target =
        launchTarget(R"({"role": 75, "slow": 100, "children": [{"role": 39, "copies": 32}]})");
    const auto children = childrenOf(target);
    ASSERT_EQ(children.size(), 32u);
    std::vector<Accessibility::Request> requests;
    for (const auto& child : children)
        requests.push_back({child, Attribute::role});
    const auto answers = accessibility().read(requests);
    EXPECT_EQ(std::get<std::string>(answers.front().role), "AXGroup");
    EXPECT_TRUE(std::holds_alternative<std::monostate>(answers.back().role));
    EXPECT_EQ(reports().size(), 1u);
}

struct WithoutAccessibilityTest : DesktopTest {
    WithoutAccessibilityTest() : DesktopTest(rehearsal::PrivateDesktopOptions()) {}
};

TEST_F(WithoutAccessibilityTest, OnlyTheTablesProcessesAreListed) {
    EXPECT_FALSE(AX::trusted());
    EXPECT_FALSE(Telephony::callActive());
    const auto process = launch({"sleep", "1000"});
    EXPECT_TRUE(eventually([&] {
        return std::ranges::count(workspace().runningApplications(), process.pid(),
                                  &RunningApplication::pid) == 2;
    }));
}

} // namespace
} // namespace velto::test
