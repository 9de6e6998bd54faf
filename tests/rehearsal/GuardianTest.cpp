// Whichever process is killed, nothing stays behind. Real processes, because that is what is promised.
#include "rehearsal/director/Guardian.h"
#include "rehearsal/director/Stage.h"
#include "rehearsal/process/TextFile.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <sstream>

namespace velto::rehearsal {
namespace {

using namespace std::chrono_literals;

/// Names the private folder in the environment of every dummy.
constexpr const char* kMarker = "VELTO_GUARDIAN_TEST";

/// A director with two programs, one of which has a child that escapes its parent and ignores SIGTERM.
int directDummies(const GuardianLink& guardian, int report) {
    Stage stage(guardian);
    const auto dummy = [&](const char* title, const char* script) {
        return stage.add({title,
                          {"/bin/sh", "-c", script},
                          {{"PATH", "/usr/bin:/bin"}, {kMarker, guardian.folder()}},
                          guardian.folder() / "err"},
                         [](const boost::json::object&) {});
    };
    const auto* first = dummy("first", "exec sleep 300");
    const auto* second =
        dummy("second", "trap '' TERM; setsid sleep 300 & echo '{\"up\":1}'; sleep 300; true");
    std::ostringstream line;
    line << guardian.folder().string() << ' ' << ::getpid() << ' ' << first->pid() << ' ' << second->pid()
         << '\n';
    const auto text = line.str();
    if (::write(report, text.data(), text.size()) < 0)
        return 9;
    stage.waitUntil([] { return false; }, 30s);
    std::fprintf(stderr, "failure: %s\n", stage.failure().c_str());
    const int code = stage.stopCode() != 0 ? stage.stopCode() : 1;
    stage.end();
    if (stage.guardianGone())
        guardian.cleanUp();
    return code;
}

struct GuardianTest : testing::Test {
    std::string folder;
    pid_t guardian = 0;
    pid_t director = 0;
    pid_t first = 0;
    pid_t second = 0;
    int alive = -1; ///< end of file once no process of the tree holds its standard error
    std::string said;

    void start(bool keepFolder = false) {
        std::array<int, 2> report{};
        std::array<int, 2> errors{};
        ASSERT_EQ(::pipe2(report.data(), O_CLOEXEC), 0);
        ASSERT_EQ(::pipe2(errors.data(), O_CLOEXEC), 0);
        guardian = ::fork();
        if (guardian == 0) {
            ::dup2(errors[1], STDERR_FILENO);
            ::alarm(60); // in place of waiting for ever
            ::_exit(runGuarded({keepFolder},
                               [&](const GuardianLink& link) { return directDummies(link, report[1]); }));
        }
        ::close(report[1]);
        ::close(errors[1]);
        std::string line(200, '\0');
        line.resize(
            static_cast<std::size_t>(std::max<ssize_t>(0, ::read(report[0], line.data(), line.size()))));
        ::close(report[0]);
        std::istringstream(line) >> folder >> director >> first >> second;
        ASSERT_TRUE(std::filesystem::exists(folder));
        alive = errors[0];
    }

    /// Waits until the whole tree has ended, and answers the guardian's exit status.
    int wait() {
        int status = 0;
        ::waitpid(guardian, &status, 0);
        // The director writes to the same pipe: its end is the end of both.
        std::array<char, 512> bytes{};
        pollfd ready{alive, POLLIN, 0};
        while (::poll(&ready, 1, 5000) == 1) {
            const auto count = ::read(alive, bytes.data(), bytes.size());
            if (count <= 0)
                break;
            said.append(bytes.data(), static_cast<std::size_t>(count));
        }
        ::close(alive);
        return status;
    }
    void expectNothingLeft(bool butTheFolder = false) const {
        EXPECT_EQ(std::filesystem::exists(folder), butTheFolder);
        std::filesystem::remove_all(folder);
        for (const auto pid : {director, first, second})
            EXPECT_TRUE(isGone(pid)) << pid;
        EXPECT_EQ(orphans(), 0);
    }
    /// A zombie that nobody here may reap is gone, too.
    static bool isGone(pid_t pid) {
        const auto stat = readFile("/proc/" + std::to_string(pid) + "/stat").value_or("");
        return stat.empty() || stat.find(") Z ") != std::string::npos;
    }
    /// The escaped grandchild has nothing to be known by but its environment.
    int orphans() const {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const auto environment = readFile(entry.path() / "environ").value_or("");
            count += environment.find(std::string(kMarker) + "=" + folder) != std::string::npos ? 1 : 0;
        }
        return count;
    }
};

TEST_F(GuardianTest, AProgramThatIsKilledEndsEverything) {
    for (const bool theSecond : {false, true}) {
        said.clear();
        start();
        ::kill(theSecond ? second : first, SIGKILL);
        const int status = wait();
        EXPECT_EQ(WEXITSTATUS(status), 1);
        EXPECT_NE(said.find(theSecond ? "second was killed (SIGKILL)" : "first was killed (SIGKILL)"),
                  std::string::npos)
            << said;
        expectNothingLeft();
    }
}

TEST_F(GuardianTest, TheGuardianClearsUpAfterAKilledDirectorAndTheDirectorAfterAKilledGuardian) {
    start();
    ::kill(director, SIGKILL);
    EXPECT_EQ(WEXITSTATUS(wait()), 1);
    EXPECT_NE(said.find("the director was killed (SIGKILL)"), std::string::npos) << said;
    expectNothingLeft();

    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    for (const bool kept : {false, true}) {
        said.clear();
        start(kept);
        ::kill(guardian, SIGKILL);
        EXPECT_TRUE(WIFSIGNALED(wait()));
        ::waitpid(director, nullptr, 0); // came to this process when its parent died
        EXPECT_NE(said.find("the guardian (the outer velto-rehearse) was killed"), std::string::npos) << said;
        expectNothingLeft(kept);
    }
}

TEST_F(GuardianTest, SignalsEndEverythingAndShowInTheExitCode) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        start();
        ::kill(guardian, number);
        EXPECT_EQ(WEXITSTATUS(wait()), 128 + number);
        expectNothingLeft();
    }
    // A director that does not react is killed.
    said.clear();
    start();
    ::kill(director, SIGSTOP);
    ::kill(guardian, SIGINT);
    EXPECT_EQ(WEXITSTATUS(wait()), 1);
    expectNothingLeft();
}

TEST(Stage, WhoeverDoesNotEndAsAskedIsNamed) {
    const GuardianLink link(std::filesystem::temp_directory_path(), -1);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const auto wrongEnds = [&](const std::string& script, bool inHaste = false) {
        Stage stage(link);
        std::vector<pid_t> adopted;
        stage.add({"it", {"/bin/sh", "-c", script}, {{"PATH", "/usr/bin:/bin"}}, "/dev/null"},
                  [&](const boost::json::object& object) {
                      adopted.push_back(object.at("pid").to_number<pid_t>());
                  });
        EXPECT_TRUE(stage.waitUntil([&] { return !adopted.empty(); }, 10s));
        if (inHaste)
            stage.fail("time is short");
        auto wrong = stage.end();
        if (adopted.front() == 0)
            return wrong;
        EXPECT_EQ(wrong, std::vector<std::string>{}); // the parent ends, its child comes to this process
        if (auto sentence = stage.endOther("the other", adopted.front()))
            wrong.push_back(std::move(*sentence));
        ::waitpid(adopted.front(), nullptr, 0);
        return wrong;
    };
    using Sentences = std::vector<std::string>;
    EXPECT_EQ(wrongEnds("echo '{\"pid\":0}'; exec sleep 300"), Sentences{});
    EXPECT_EQ(wrongEnds("trap 'kill -SEGV $$' TERM; echo '{\"pid\":0}'; while :; do sleep 0.01; done"),
              Sentences{"it was killed (SIGSEGV) when it was to end"});
    EXPECT_EQ(wrongEnds("trap '' TERM; echo '{\"pid\":0}'; while :; do sleep 0.01; done", true),
              Sentences{"it did not end when it was asked to, and was killed"});
    const auto other = [](const std::string& script) { return "sh -c \"" + script + "\" & exec sleep 300"; };
    EXPECT_EQ(wrongEnds(other("echo '{\\\"pid\\\":'\\$\\$'}'; exec sleep 300")), Sentences{});
    EXPECT_EQ(
        wrongEnds(other("trap 'exit 3' TERM; echo '{\\\"pid\\\":'\\$\\$'}'; while :; do sleep 0.01; done")),
        Sentences{"the other ended with exit code 3 when it was to end"});
}

} // namespace
} // namespace velto::rehearsal
