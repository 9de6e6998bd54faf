// Administrator rights by the real polkit and pkexec, asked for by a user who is not root; for the machine
// that polkit.sh makes.
#include "VeltoApp/admin/Admin.h"
#include "VeltoApp/drivers/DriverLines.h"
#include "VeltoApp/drivers/DriverState.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxDriverPlace.h"
#include "VeltoPlatform/linux/PolkitAdmin.h"
#include "rehearsal/process/ChildProcess.h"
#include "tests/admin/AuthenticationAgent.h"
#include "tests/support/Eventually.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

namespace velto::test {
namespace {

using enum AuthenticationAgent::Answer;
using Texts = std::vector<std::string>;

constexpr uid_t kUser = 65'534;
const std::string kWho = "echo $(id -u) for $PKEXEC_UID";
const std::string kDone = "0: 0 for 65534";

/// Runs each command when it is told to, and says what came of it.
int application(const char* installed, const Texts& commands) {
    sigset_t go;
    ::sigemptyset(&go);
    ::sigaddset(&go, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &go, nullptr);
    if (::setgroups(0, nullptr) != 0 || ::setgid(kUser) != 0 || ::setuid(kUser) != 0 || ::chdir("/") != 0)
        return 1;
    PolkitAdmin admin({installed, {"/opt/velto/build/velto-admin-helper"}}, {});
    installPlatform({.adminRights = &admin});
    std::cout << "ready" << std::endl;
    for (const auto& command : commands) {
        int number = 0;
        ::sigwait(&go, &number);
        const auto result = Admin::run(command);
        std::cout << result.status << ": " << result.stdout.substr(0, result.stdout.find('\n')) << std::endl;
    }
    return 0;
}

struct Polkit : ::testing::Test {
    std::optional<rehearsal::ChildProcess> app;
    std::optional<AuthenticationAgent> agent;

    void start(Texts commands, const char* installed = "/opt/velto/libexec/velto-admin-helper") {
        commands.insert(commands.begin(), {"/proc/self/exe", "--application", installed});
        app = rehearsal::ChildProcess::start({"the application",
                                              commands,
                                              {{"PATH", "/usr/bin:/bin"}, {"SHELL", "/no/shell"}},
                                              "/opt/app.err"});
        ASSERT_TRUE(app);
        ASSERT_EQ(line(), "ready");
    }
    void answer(std::deque<AuthenticationAgent::Answer> answers) {
        agent.emplace(app->pid(), std::move(answers));
        ASSERT_TRUE(agent->registered());
    }
    std::string line() {
        return nextLine(*app, [this] {
            if (agent)
                agent->process();
        });
    }
    std::string next() {
        app->signal(SIGUSR1);
        return line();
    }
};

TEST_F(Polkit, TheUserIsAskedUntilItIsGrantedAndThenNotAgain) {
    start({kWho, kWho, kWho, kWho, "exit 127"});
    answer({dismissed, wrongPassword, rightPassword});
    EXPECT_EQ(next(), "-60006: ");
    EXPECT_EQ(next(), "-60005: ");
    EXPECT_EQ(next(), kDone);
    EXPECT_EQ(next(), kDone);
    EXPECT_EQ(next(), "0: ");
    EXPECT_EQ(agent->asked(), Texts(3, "org.velto.Velto.admin"));
}

TEST_F(Polkit, DriversAreInstalledAndRemovedWithOneQuestion) {
    std::filesystem::copy(VELTO_DRIVERS, "/opt/the drivers", std::filesystem::copy_options::recursive);
    LinuxDriverPlace place;
    installPlatform({.driverPlace = &place});
    start({DriverLines::install("/opt/the drivers"), DriverLines::uninstall()});
    answer({rightPassword});
    EXPECT_EQ(next(), "0: ");
    EXPECT_EQ(DriverState::installed(), (Texts{"VeltoHQ.driver", "VeltoLoop.driver", "VeltoVoice.driver"}));
    EXPECT_EQ(readFile("/etc/pulse/default.pa.d/VeltoLoop.pa"),
              readFile("/opt/the drivers/VeltoLoop.driver/pulse.pa"));
    EXPECT_NE(readFile("/etc/pipewire/pipewire.conf.d/VeltoVoice.conf"), "");
    EXPECT_EQ(next(), "0: ");
    EXPECT_TRUE(std::filesystem::is_empty("/usr/local/share"));
    EXPECT_EQ(readFile("/etc/pipewire/pipewire.conf.d/VeltoVoice.conf"), "");
    EXPECT_EQ(agent->asked().size(), 1u);
}

TEST_F(Polkit, AHelperThatIsNotInstalledNeedsTheGenericRight) {
    start({kWho}, "/opt/velto/not-installed");
    answer({rightPassword});
    EXPECT_EQ(next(), kDone);
    EXPECT_EQ(agent->asked(), Texts{"org.freedesktop.policykit.exec"});
}

// The last: nothing reaches the bus from here on.
TEST_F(Polkit, WithoutSomebodyToAskNothingRuns) {
    start({kWho, kWho});
    EXPECT_EQ(next(), std::to_string(AdminStatus::nobodyToAsk) + ": ");
    std::filesystem::remove("/run/dbus/system_bus_socket");
    EXPECT_EQ(next(), std::to_string(AdminStatus::notAvailable) + ": ");
}

} // namespace
} // namespace velto::test

int main(int argc, char** argv) {
    using namespace velto::test;
    if (argc > 2 && std::string(argv[1]) == "--application")
        return application(argv[2], Texts(argv + 3, argv + argc));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
