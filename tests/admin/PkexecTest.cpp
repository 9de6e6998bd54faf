// The way to the root helper and back, with a pkexec of our own in front of it.
#include "VeltoApp/admin/Admin.h"
#include "VeltoApp/admin/HelperRun.h"
#include "VeltoApp/admin/RunAdmin.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Spawn.h"
#include "VeltoPlatform/linux/AdminProtocol.h"
#include "VeltoPlatform/linux/PolkitAdmin.h"
#include "tests/support/Eventually.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestComputer.h"
#include "velto-admin-helper/CommandServer.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <csignal>
#include <sstream>
#include <thread>

namespace velto::test {
namespace {

namespace fs = std::filesystem;

const std::string kHelper = VELTO_UNCHECKED_HELPER;
const std::string kGone = "velto: the helper ended, or failed, before the command's end\n";

struct Pkexec : ::testing::Test {
    TemporaryFolder folder;
    ScopedEnvironment environment;
    std::vector<std::string> reports;
    PolkitAdmin admin{{folder.path() / "not-installed", {kHelper}},
                      [this](const std::string& line) { reports.push_back(line); }};

    void SetUp() override {
        environment.set("PATH", folder.path().string() + ":/usr/bin:/bin");
        environment.set("VELTO_SECRET", "the user's own");
        pkexec("PKEXEC_UID=1234 exec \"$2\"");
        installPlatform({.adminRights = &admin});
    }
    void TearDown() override { installPlatform({}); }

    /// What it does, after it has noted that it was asked.
    void pkexec(const std::string& script) const {
        writeProgram(folder.path() / "pkexec",
                     "echo \"$@\" >>" + (folder.path() / "asked").string() + "\n" + script);
    }
    long asked() const {
        const auto text = readFile(folder.path() / "asked");
        return std::count(text.begin(), text.end(), '\n');
    }
    static std::string firstText(AdminPipe& pipe) {
        std::string text(256, '\0');
        text.resize(pipe.read(text));
        return text;
    }
    static bool ends(const FileDescriptor& exit) {
        pollfd ended{exit.get(), POLLIN, 0};
        return ::poll(&ended, 1, 10'000) == 1;
    }
    static void kill(const std::string& process) {
        const auto exit = exitDescriptor(std::stoi(process));
        EXPECT_EQ(::kill(std::stoi(process), SIGKILL), 0);
        EXPECT_TRUE(ends(exit));
    }
    std::string output(const std::string& command) {
        const auto result = Admin::run(command);
        EXPECT_EQ(result.status, 0) << command;
        return result.stdout;
    }
};

TEST_F(Pkexec, CommandsRunAsTheyAreAfterOneQuestion) {
    EXPECT_EQ(output("echo \"a  b\" '$(id)'; echo err >&2; exit 3"), "a  b $(id)\nerr\n");
    EXPECT_EQ(reports, std::vector<std::string>{"admin: a command ended with exit status 3"});
    EXPECT_EQ(output("cat; pwd; ls /proc/$$/fd | tr '\\n' ' '"), "/\n0 1 2 ");
    EXPECT_EQ(output("env | sort | grep -v -e ^_= -e ^PWD="),
              "HOME=/root\nLC_ALL=C.UTF-8\nLOGNAME=root\nPATH=/usr/sbin:/usr/bin:/sbin:/bin\n"
              "PKEXEC_UID=1234\nSHELL=/bin/sh\nUSER=root\n");
    EXPECT_EQ(output(""), "");
    const std::string longest = "#" + std::string(AdminProtocol::kLongestCommand - 1, 'x');
    EXPECT_EQ(output(longest), "");
    EXPECT_EQ(Admin::run(longest + "x").status, AdminStatus::badCommand);
    EXPECT_EQ(Admin::run(std::string("rm -rf /a\0b", 11)).status, AdminStatus::badCommand);
    EXPECT_EQ(readFile(folder.path() / "asked"), "--disable-internal-agent " + kHelper + "\n");
    admin.freeAuthorization();
    EXPECT_EQ(output("echo again"), "again\n");
    EXPECT_EQ(asked(), 2);
}

TEST_F(Pkexec, OutputsOfEveryKindComeToAnEnd) {
    for (const std::size_t size : {4095, 4096, 10'000'000})
        EXPECT_EQ(output("head -c " + std::to_string(size) + " /dev/zero | tr '\\0' x"),
                  std::string(size, 'x'));
    EXPECT_EQ(output("printf 'gr\\303\\274n'"), "grün");
    EXPECT_EQ(output("printf 'gr\\374n'"), "") << "no text";
    // Children that hold the pipe, one that writes to it without an end.
    const auto left = output("sleep 60 & echo $!; yes >&2 & echo last");
    EXPECT_NE(left.find("last\n"), left.npos);
    EXPECT_EQ(::kill(std::stoi(left), SIGKILL), 0);
    EXPECT_EQ(output("echo next"), "next\n");
    // Output that nobody wants, more than fits between us.
    const auto done = folder.path() / "done";
    EXPECT_EQ(velto_run_admin(("head -c 10000000 /dev/zero; touch " + done.string()).c_str(), nullptr), 0);
    EXPECT_TRUE(eventually([&] { return fs::exists(done); }));
    EXPECT_EQ(velto_run_admin("exec >&-; exec 2>&-; exit 1", nullptr), 0);
    EXPECT_EQ(output("echo heard"), "heard\n");
    EXPECT_EQ(asked(), 1);
}

TEST_F(Pkexec, RefusalsAreToldApart) {
    const std::string error = "echo 'Error executing command as another user: ";
    const std::vector<std::tuple<std::string, std::int32_t, std::string>> cases{
        {error + "Request dismissed' >&2; exit 126", -60006, "was dismissed"},
        {error + "Not authorized\n\nThis incident has been reported.' >&2; exit 127", -60005, "denied"},
        {error + "No authentication agent found.' >&2; exit 127", AdminStatus::nobodyToAsk, "agent"},
        {"echo 'Error getting authority: no' >&2; exit 127", AdminStatus::notAvailable, "polkitd"},
        {"echo 'pkexec must be setuid root' >&2; exit 127", AdminStatus::notAvailable, "setuid root"},
        {"exit 127", -60005, "denied"},
        {"echo 'Error accessing /x: Permission denied' >&2; exit 127", AdminStatus::noHelper, "for root"},
        {"echo 'Error executing /x: Permission denied' >&2; exit 127", AdminStatus::noHelper, "for root"},
        {"kill -9 $$", AdminStatus::failed, "pkexec ended with 137"},
        {"echo hello >&0", AdminStatus::failed, "not this version's helper"},
        {"dd if=/dev/zero bs=70000 count=1 >&0 2>/dev/null", AdminStatus::failed, "pkexec ended with 0"}};
    for (const auto& [script, status, told] : cases) {
        pkexec(script);
        reports.clear();
        const auto before = asked();
        const auto result = Admin::run("echo x");
        EXPECT_EQ(result.status, status) << script;
        EXPECT_EQ(result.stdout, "");
        ASSERT_EQ(reports.size(), 1u) << script;
        EXPECT_NE(reports[0].find(told), std::string::npos) << reports[0];
        EXPECT_GT(asked(), before);
    }
    fs::remove(folder.path() / "pkexec");
    environment.set("PATH", folder.path());
    EXPECT_EQ(Admin::run("echo x").status, AdminStatus::notAvailable);
    EXPECT_NE(reports.back().find("install the packages pkexec and polkitd"), std::string::npos);
}

TEST_F(Pkexec, AHelperThatGoesOrTalksNonsenseEndsTheOutput) {
    ASSERT_EQ(admin.createAuthorization(), 0);
    std::unique_ptr<AdminPipe> pipe;
    ASSERT_EQ(admin.execute("echo $PPID $$; exec sleep 60", pipe), 0);
    const auto both = firstText(*pipe);
    kill(both);
    kill(both.substr(both.find(' ')));
    EXPECT_EQ(firstText(*pipe), kGone);
    EXPECT_EQ(firstText(*pipe), "");
    pipe.reset();
    EXPECT_EQ(reports, std::vector<std::string>{"admin: " + kGone.substr(7, kGone.size() - 8)});
    // Gone between two commands.
    kill(output("echo $PPID"));
    EXPECT_EQ(output("echo next"), "next\n");
    EXPECT_EQ(asked(), 3);
    for (const char* nonsense : {"Xjunk", "O", "E", "Eone", "E1x", "E99999999999"}) {
        admin.freeAuthorization();
        pkexec(std::string(
                   "printf 'Hvelto-admin-helper 1' >&0; head -c 1 <&0 >/dev/null; printf 'Opart\\n' >&0\n"
                   "printf '") +
               nonsense + "' >&0; head -c 1 <&0");
        EXPECT_EQ(output("echo x"), "part\n" + kGone) << nonsense;
    }
}

TEST_F(Pkexec, ACommandEndsWithThoseWhoWantIt) {
    ASSERT_EQ(admin.createAuthorization(), 0);
    std::unique_ptr<AdminPipe> pipe;
    ASSERT_EQ(admin.execute("sleep 60 & echo $$ $!; wait", pipe), 0);
    pid_t shell = 0;
    pid_t child = 0;
    std::istringstream(firstText(*pipe)) >> shell >> child;
    const auto shellEnd = exitDescriptor(shell);
    const auto childEnd = exitDescriptor(child);
    ASSERT_TRUE(shellEnd && childEnd);
    pipe.reset();
    EXPECT_EQ(::kill(shell, 0), 0) << "still wanted";
    admin.freeAuthorization();
    EXPECT_TRUE(ends(shellEnd) && ends(childEnd));
}

TEST_F(Pkexec, TheHelperTakesNothingButCommands) {
    const auto tooLong = "R" + std::string(AdminProtocol::kLongestCommand + 1, '#');
    for (const auto& message : {std::string("Xecho"), tooLong, std::string("Recho\0x", 7), std::string()}) {
        std::array<int, 2> sockets{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, sockets.data()), 0);
        const FileDescriptor ours(sockets[0]);
        FileDescriptor theirs(sockets[1]);
        std::thread helper([&theirs] {
            serveCommands(theirs.get(), "1234");
            theirs.close();
        });
        ::send(ours.get(), "Q", 1, 0); // of a command that had ended
        ::send(ours.get(), message.data(), message.size(), 0);
        EXPECT_EQ(readAll(ours.get()), "Hvelto-admin-helper 1") << message.substr(0, 8);
        helper.join();
    }
}

TEST_F(Pkexec, OnlyASafeHelperIsUsed) {
    const auto mine = folder.path() / "mine";
    fs::copy_file(kHelper, mine);
    const auto unsafe = findAdminHelper({mine, {kHelper}});
    EXPECT_TRUE(unsafe.path.empty());
    EXPECT_NE(unsafe.trouble.find("others than root can change"), std::string::npos) << unsafe.trouble;
    fs::create_symlink("/usr/bin/true", folder.path() / "link");
    EXPECT_TRUE(findAdminHelper({folder.path() / "link", {}}).path.empty());
    fs::create_symlink("loop", folder.path() / "loop");
    const auto hidden = findAdminHelper({folder.path() / "loop" / "helper", {kHelper}});
    EXPECT_TRUE(hidden.path.empty());
    EXPECT_NE(hidden.trouble.find("cannot look at"), std::string::npos) << hidden.trouble;
    EXPECT_EQ(findAdminHelper({"/usr/bin/true", {kHelper}}).path, "/usr/bin/true");
    EXPECT_EQ(findAdminHelper({folder.path() / "gone", {folder.path(), kHelper}}).path, kHelper);
    EXPECT_TRUE(findAdminHelper({folder.path() / "gone", {folder.path() / "gone"}}).path.empty());

    PolkitAdmin without({folder.path() / "gone", {}}, {});
    EXPECT_EQ(without.createAuthorization(), AdminStatus::noHelper);

    // By hand, and as pkexec starts it but with nobody to talk to.
    for (const char* user : {"", "1234", "root"}) {
        const auto result = Helper::run(VELTO_ADMIN_HELPER, {}, {}, {{{"PKEXEC_UID", user}}});
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.stderr.find("started by Velto"), std::string::npos);
    }
}

} // namespace
} // namespace velto::test
