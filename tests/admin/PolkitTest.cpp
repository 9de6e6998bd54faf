// Administrator rights by the real polkit and pkexec, asked for by a user who is not root.
#include "VeltoApp/admin/Admin.h"
#include "VeltoApp/drivers/DriverLines.h"
#include "VeltoApp/drivers/DriverState.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxDriverPlace.h"
#include "VeltoPlatform/linux/PolkitAdmin.h"
#include "tests/admin/AuthenticationAgent.h"
#include "tests/admin/PolkitMachine.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iostream>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using enum AuthenticationAgent::Answer;
using Texts = std::vector<std::string>;

constexpr uid_t kUser = 65'534;
const std::string kWho = "echo $(id -u) for $PKEXEC_UID";
const std::string kDone = "0: 0 for 65534";

PolkitMachine* machine = nullptr;

/// Runs each command when it is told to, and says what came of it.
int application(const char* installed, const Texts& commands) {
    sigset_t go;
    ::sigemptyset(&go);
    ::sigaddset(&go, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &go, nullptr);
    if (::setgroups(0, nullptr) != 0 || ::setgid(kUser) != 0 || ::setuid(kUser) != 0 || ::chdir("/") != 0)
        return 1;
    PolkitAdmin admin({installed, {PolkitMachine::otherHelper}}, {});
    Platform parts;
    parts.adminRights = &admin;
    installPlatform(parts);
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

    void start(Texts commands, const char* installed = PolkitMachine::installedHelper) {
        commands.insert(commands.begin(), {"/proc/self/exe", "--application", installed});
        app = rehearsal::ChildProcess::start({"the application",
                                              commands,
                                              {{"PATH", "/usr/bin:/bin"}, {"SHELL", "/no/shell"}},
                                              "/opt/app.err"});
        ASSERT_TRUE(app);
        ASSERT_EQ(line(), "ready") << readFile("/opt/app.err");
    }
    std::string line() {
        for (;;) {
            const auto lines = app->readLines();
            if (!lines.empty() || app->output() < 0)
                return lines.empty() ? "no answer" : lines.front();
            pollfd arrived{app->output(), POLLIN, 0};
            if (::poll(&arrived, 1, 20'000) == 0)
                return "late";
        }
    }
    std::string next() {
        app->signal(SIGUSR1);
        return line();
    }
};

TEST_F(Polkit, TheUserIsAskedOnceForTheLifeOfTheProcess) {
    start({kWho, kWho, "exit 127"});
    AuthenticationAgent agent(app->pid(), kUser, {rightPassword});
    ASSERT_TRUE(agent.registered());
    EXPECT_EQ(next(), kDone);
    EXPECT_EQ(next(), kDone);
    EXPECT_EQ(next(), "0: ");
    EXPECT_EQ(agent.asked(), Texts{"org.velto.Velto.admin"});
}

std::vector<std::string> listing() {
    std::vector<std::string> files;
    for (const char* folder : {"/usr/local/share", "/etc/pulse", "/etc/pipewire"}) {
        std::error_code error;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error))
            files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

TEST_F(Polkit, DriversAreInstalledAndRemovedWithOneQuestion) {
    std::filesystem::copy(VELTO_DRIVERS, "/opt/the drivers", std::filesystem::copy_options::recursive);
    LinuxDriverPlace place;
    Platform parts;
    parts.driverPlace = &place;
    installPlatform(parts);
    const auto before = listing();
    start({DriverLines::install("/opt/the drivers"), DriverLines::uninstall()});
    AuthenticationAgent agent(app->pid(), kUser, {rightPassword});
    EXPECT_EQ(next(), "0: ");
    EXPECT_EQ(DriverState::installed(), (Texts{"VeltoHQ.driver", "VeltoLoop.driver", "VeltoVoice.driver"}));
    EXPECT_EQ(readFile("/etc/pulse/default.pa.d/VeltoLoop.pa"),
              readFile("/opt/the drivers/VeltoLoop.driver/pulse.pa"));
    EXPECT_NE(readFile("/etc/pipewire/pipewire.conf.d/VeltoVoice.conf"), "");
    EXPECT_EQ(next(), "0: ");
    EXPECT_EQ(listing(), before);
    EXPECT_EQ(agent.asked().size(), 1u);
}

TEST_F(Polkit, WhoRefusesIsAskedAgain) {
    start({kWho, kWho, kWho});
    AuthenticationAgent agent(app->pid(), kUser, {dismissed, wrongPassword, rightPassword});
    ASSERT_TRUE(agent.registered());
    EXPECT_EQ(next(), "-60006: ");
    EXPECT_EQ(next(), "-60005: ");
    EXPECT_EQ(next(), kDone);
    EXPECT_EQ(agent.asked().size(), 3u);
}

TEST_F(Polkit, AHelperThatIsNotInstalledNeedsTheGenericRight) {
    start({kWho}, "/opt/velto/not-installed");
    AuthenticationAgent agent(app->pid(), kUser, {rightPassword});
    EXPECT_EQ(next(), kDone);
    EXPECT_EQ(agent.asked(), Texts{"org.freedesktop.policykit.exec"});
}

TEST_F(Polkit, ACommandEndsWithAnApplicationThatIsKilled) {
    start({"echo $$ >/opt/shell; sleep 60"});
    AuthenticationAgent agent(app->pid(), kUser, {rightPassword});
    app->signal(SIGUSR1);
    std::string shell;
    for (int i = 0; i < 2000 && !shell.ends_with('\n'); ++i, std::this_thread::sleep_for(5ms))
        shell = readFile("/opt/shell");
    ASSERT_NE(shell, "");
    app->kill();
    int found = 0;
    for (int i = 0; i < 2000 && found == 0; ++i, std::this_thread::sleep_for(5ms))
        found = ::kill(std::stoi(shell), 0);
    EXPECT_NE(found, 0);
}

TEST_F(Polkit, WithoutSomebodyToAskNothingRuns) {
    const std::string nobody = std::to_string(AdminStatus::nobodyToAsk) + ": ";
    const std::string notAvailable = std::to_string(AdminStatus::notAvailable) + ": ";
    start({kWho, kWho});
    EXPECT_EQ(next(), nobody);
    machine->stop();
    EXPECT_EQ(next(), notAvailable);
}

} // namespace
} // namespace velto::test

int main(int argc, char** argv) {
    using namespace velto::test;
    if (argc > 2 && std::string(argv[1]) == "--application")
        return application(argv[2], Texts(argv + 3, argv + argc));
    ::testing::InitGoogleTest(&argc, argv);
    PolkitMachine::enter();
    PolkitMachine here;
    machine = &here;
    if (!here.up()) {
        std::cerr << readFile("/opt/bus.err") << readFile("/opt/polkit.err");
        return 1;
    }
    return RUN_ALL_TESTS();
}
