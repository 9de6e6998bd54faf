// Programs run as the user: their status, both their outputs, and what they get from us.
#include "VeltoApp/admin/HelperRun.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace velto::test {
namespace {

Helper::Result shell(const std::string& line) {
    return Helper::run("/bin/sh", {"-c", line});
}

TEST(HelperRun, answersStatusAndBothTexts) {
    const auto result = shell("echo out; echo err >&2; exit 7");
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.stdout, "out\n");
    EXPECT_EQ(result.stderr, "err\n");
    EXPECT_EQ(shell("kill -9 $$").status, 128 + SIGKILL);
    // More than a pipe holds, in the order that would leave both sides waiting.
    const auto much =
        shell("head -c 1000000 /dev/zero | tr '\\0' e >&2; head -c 1000000 /dev/zero | tr '\\0' o");
    EXPECT_EQ(much.stderr, std::string(1'000'000, 'e'));
    EXPECT_EQ(much.stdout, std::string(1'000'000, 'o'));
    const auto broken = shell("printf '\\374'; printf grün >&2");
    EXPECT_EQ(broken.stdout, "");
    EXPECT_EQ(broken.stderr, "grün");
}

TEST(HelperRun, theProgramGetsWhatItIsGivenAndNothingElse) {
    const TemporaryFolder folder;
    ScopedEnvironment environment;
    environment.set("VELTO_KEPT", "kept");
    environment.set("VELTO_CHANGED", "before");
    const auto result =
        Helper::run("/bin/sh", {"-c", "pwd; echo $1 $VELTO_KEPT $VELTO_CHANGED $VELTO_NEW", "sh", "$(id) *"},
                    folder.path(), {{{"VELTO_CHANGED", "a=b"}, {"VELTO_NEW", "new"}}});
    EXPECT_EQ(result.stdout, folder.path().string() + "\n$(id) * kept a=b new\n");

    const int inherited = ::open("/dev/null", O_RDONLY); // without O_CLOEXEC
    ASSERT_EQ(::signal(SIGTERM, SIG_IGN), SIG_DFL);
    EXPECT_EQ(shell("cat; ls /proc/$$/fd").stdout, "0\n1\n2\n");
    EXPECT_EQ(shell("kill -TERM $$; echo alive").status, 128 + SIGTERM);
    ::signal(SIGTERM, SIG_DFL);
    ::close(inherited);
}

TEST(HelperRun, whatCannotBeStartedSaysWhy) {
    const TemporaryFolder folder;
    const auto missing = Helper::run("/no/such/program", {});
    EXPECT_EQ(missing.status, -1);
    EXPECT_EQ(missing.stdout, "");
    EXPECT_EQ(missing.stderr, "cannot run /no/such/program: No such file or directory");
    EXPECT_EQ(Helper::run("sh", {"-c", "true"}).status, -1) << "PATH is not searched";
    EXPECT_EQ(Helper::run("", {}).status, -1);
    EXPECT_EQ(Helper::run(folder.path(), {}).stderr,
              "cannot run " + folder.path().string() + ": Permission denied");
    EXPECT_EQ(Helper::run("/bin/sh", {"-c", "true"}, folder.path() / "gone").stderr,
              "cannot run /bin/sh: no such working folder: " + (folder.path() / "gone").string());
    EXPECT_EQ(Helper::run("/bin/sh", {"-c", std::string("rm -rf /a\0b", 11)}).status, -1);
}

} // namespace
} // namespace velto::test
