// Administrator runs on the simulated computer: when the user is asked, and what comes back.
#include "VeltoApp/admin/Admin.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

using Answers = std::deque<std::int32_t>;
using Commands = std::vector<std::string>;

std::int32_t runs(const std::string& command) {
    const auto result = Admin::run(command);
    EXPECT_EQ(result.stderr,
              result.status == 0 ? "" : "authorization failed (" + std::to_string(result.status) + ")");
    return result.status;
}

TEST(Admin, theGrantIsKeptUntilTheUserTakesItBack) {
    TestComputer computer;
    auto& admin = computer.admin;
    EXPECT_EQ(runs("one"), 0);
    EXPECT_EQ(runs("two"), 0);
    EXPECT_EQ(admin.asked, 1);
    // A failure of another kind is no reason to ask again.
    admin.executeAnswers = {AdminStatus::failed};
    EXPECT_EQ(runs("lost"), AdminStatus::failed);
    EXPECT_EQ(runs("three"), 0);
    EXPECT_EQ(admin.asked, 1);
    int asked = 1;
    for (const auto answer : {AdminStatus::denied, AdminStatus::cancelled}) {
        admin.executeAnswers = {answer};
        EXPECT_EQ(runs("lost"), answer);
        EXPECT_FALSE(admin.hasAuthorization());
        EXPECT_EQ(runs("again"), 0);
        EXPECT_EQ(admin.asked, ++asked);
    }
    EXPECT_EQ(admin.commands, (Commands{"one", "two", "three", "again", "again"}));
}

TEST(Admin, withoutAGrantNothingRunsAndTheNextRunAsks) {
    TestComputer computer;
    auto& admin = computer.admin;
    admin.createAnswers = {AdminStatus::noHelper};
    EXPECT_EQ(runs("lost"), AdminStatus::noHelper);
    EXPECT_EQ(admin.asked, 0);
    admin.preauthorizeAnswers = {AdminStatus::cancelled, AdminStatus::nobodyToAsk};
    EXPECT_EQ(runs("lost"), -60006);
    EXPECT_EQ(runs("lost"), AdminStatus::nobodyToAsk);
    EXPECT_FALSE(admin.hasAuthorization());
    EXPECT_EQ(runs(std::string("rm -rf /a\0b", 11)), AdminStatus::badCommand);
    EXPECT_EQ(admin.asked, 2);
    EXPECT_EQ(runs("run"), 0);
    EXPECT_EQ(admin.commands, Commands{"run"});
}

TEST(Admin, outputComesWholeAndIsText) {
    TestComputer computer;
    std::optional<std::string> printed;
    computer.admin.shell = [&](const std::string&) { return printed; };
    for (const std::size_t size : {0, 1, 4095, 4096, 4097, 8193, 1'000'000}) {
        printed = std::string(size, 'x');
        EXPECT_EQ(Admin::run("print").stdout, *printed) << size;
    }
    printed = "grün\n";
    EXPECT_EQ(Admin::run("print").stdout, "grün\n");
    printed = "gr\xfcn\n";
    EXPECT_EQ(Admin::run("print").stdout, "");
}

} // namespace
} // namespace velto::test
