// Programs of a rehearsal that do not end as they are asked to.
#include "rehearsal/director/Stage.h"

#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/wait.h>

namespace velto::rehearsal {
namespace {

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
        EXPECT_TRUE(stage.waitUntil([&] { return !adopted.empty(); }, std::chrono::seconds(10)));
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
