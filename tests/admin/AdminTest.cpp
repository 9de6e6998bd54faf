// Administrator runs on the simulated computer: when the user is asked.
#include "VeltoApp/admin/Admin.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

namespace velto::test {
namespace {

std::int32_t runs(const std::string& command) {
    const auto result = Admin::run(command);
    EXPECT_EQ(result.stderr,
              result.status == 0 ? "" : "authorization failed (" + std::to_string(result.status) + ")");
    return result.status;
}

TEST(Admin, theGrantIsKeptUntilTheUserTakesItBack) {
    TestComputer computer;
    auto& admin = computer.admin;
    admin.createAnswers = {AdminStatus::noHelper};
    EXPECT_EQ(runs("lost"), AdminStatus::noHelper);
    EXPECT_EQ(admin.asked, 0);
    EXPECT_EQ(runs("one"), 0);
    EXPECT_EQ(runs("two"), 0);
    // A failure of another kind is no reason to ask again.
    admin.executeAnswers = {AdminStatus::failed};
    EXPECT_EQ(runs("lost"), AdminStatus::failed);
    EXPECT_EQ(runs("three"), 0);
    int asked = 1;
    EXPECT_EQ(admin.asked, asked);
    for (const auto answer : {AdminStatus::denied, AdminStatus::cancelled}) {
        admin.executeAnswers = {answer};
        EXPECT_EQ(runs("lost"), answer);
        EXPECT_FALSE(admin.hasAuthorization());
        EXPECT_EQ(runs("again"), 0);
        EXPECT_EQ(admin.asked, ++asked);
    }
    EXPECT_EQ(admin.commands, (std::vector<std::string>{"one", "two", "three", "again", "again"}));
}

} // namespace
} // namespace velto::test
