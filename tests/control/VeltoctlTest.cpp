// The command line's program against a server: exits, what goes where, following.
#include "tests/control/ServerFixture.h"
#include "veltoctl/TranscriptPrinter.h"

#include <sys/wait.h>

#include <cstdlib>

namespace velto::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class VeltoctlTest : public ServerFixture {
  protected:
    struct Run {
        int exit = -1;
        std::string out;
        std::string err;
    };

    /// `arguments` as a shell would read them; `sink` takes the output.
    Run veltoctl(const std::string& arguments, const std::string& sink = "") const {
        const auto program = fs::read_symlink("/proc/self/exe").parent_path() / "veltoctl";
        const auto out = computer.root() / "out";
        const auto err = computer.root() / "err";
        const auto quoted = [](const fs::path& path) { return "'" + path.string() + "'"; };
        const auto command = "XDG_DATA_HOME=" + quoted(computer.root() / "Library" / "Application Support") +
                             " " + quoted(program) + " " + arguments + " >" +
                             (sink.empty() ? quoted(out) : sink) + " 2>" + quoted(err);
        fs::remove(out);
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
    }
};

TEST_F(VeltoctlTest, printsResultsAndExitsWithTheAnswer) {
    onMain([&] {
        session->stateText = "live";
        session->dialled = "+1\x1b[2J";
        history->records.set({{.number = "+15551234567",
                               .started = {816'553'400},
                               .duration = 61.5,
                               .transcript = "Caller: hi\nAgent: hello"},
                              {.started = {816'553'400}, .duration = 3725}});
    });
    EXPECT_EQ(veltoctl("ping").out, "Velto is running.\n");
    EXPECT_EQ(veltoctl("status").out,
              "State     live\nRunning   no\nNumber    +1\xEF\xBF\xBD[2J\nSession   -\n"
              "Provider  openai\nReady     yes\n");
    EXPECT_EQ(veltoctl("history").out,
              "2026-11-16 20:23:20 UTC   1:02  +15551234567\n    Caller: hi\n    Agent: hello\n\n"
              "2026-11-16 20:23:20 UTC  62:05  (no number)\n");
    EXPECT_EQ(veltoctl("ping --json").out, "{\"ok\":true}\n");
    EXPECT_EQ(veltoctl("--json ping").out, "{\"ok\":true}\n");
    const auto help = veltoctl("--help");
    EXPECT_EQ(help.exit, 0);
    EXPECT_NE(help.out.find("watch"), std::string::npos);
    for (const auto* command : {"readiness", "providers", "transcript", "hangup"})
        EXPECT_EQ(veltoctl(command).exit, 0) << command;
    onMain([&] { EXPECT_EQ(session->stops, 1); });

    const auto called = veltoctl("call +1555 --goal 'say hi'");
    EXPECT_EQ(called.exit, 0);
    EXPECT_EQ(called.out, "Calling +1555.\n");
    const auto busy = veltoctl("watch");
    EXPECT_EQ(busy.exit, 1);
    EXPECT_EQ(busy.out, "");
    EXPECT_EQ(busy.err, "veltoctl: Velto says no: busy\n");
    EXPECT_EQ(veltoctl("watch --json").out, "{\"ok\":false,\"error\":\"busy\"}\n");
    onMain([&] { EXPECT_EQ(session->starts, Lines{"dial +1555: say hi"}); });
}

TEST_F(VeltoctlTest, misuseAndAbsenceExitWith2) {
    for (const auto* wrong : {"", "dial", "call", "call 1", "call '' --goal x", "ping now", "status --follow",
                              "call 1 --goal \"$(printf '\\377')\"", "--nothing"}) {
        const auto run = veltoctl(wrong);
        EXPECT_EQ(run.exit, 2) << wrong;
        EXPECT_EQ(run.out, "") << wrong;
        EXPECT_TRUE(run.err.starts_with("veltoctl: ")) << run.err;
    }
    EXPECT_EQ(veltoctl("status", "/dev/full").exit, 2);
    fs::remove(path());
    const auto run = veltoctl("ping");
    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.err, "veltoctl: Velto is not running, or does not answer\n");
}

TEST_F(VeltoctlTest, aStartThatFailsAtOnceIsRefused) {
    onMain([&] { session->startWorks = false; });
    const auto run = veltoctl("call 1 --goal x --follow");
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "");
}

TEST_F(VeltoctlTest, followsASessionToItsEnd) {
    onMain([&] {
        session->transcriptAt = [this](int look) -> Lines {
            if (look < 3)
                return {"Agent: Hel"};
            if (look < 4)
                return {"Caller: Hi", "Agent: Hello"};
            session->isRunning = false;
            session->stateText = "ended";
            return {"Caller: Hi", "Agent: Hello", "Caller: Bye"};
        };
    });
    const auto run = veltoctl("call 1 --goal x --follow");
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "Caller: Hi\nAgent: Hello\nCaller: Bye\n");
    EXPECT_EQ(run.err, "veltoctl: idle\nveltoctl: ended\n");
    EXPECT_EQ(veltoctl("transcript --follow").out, run.out); // nothing runs: it ends at once
    EXPECT_EQ(veltoctl("transcript --follow --json").out,
              "{\"ok\":true,\"lines\":[\"Caller: Hi\",\"Agent: Hello\",\"Caller: Bye\"]}\n");
}

TEST(TranscriptPrinter, printsOnlyWhatIsAppended) {
    Lines printed;
    ctl::TranscriptPrinter printer([&](const std::string& line) { printed.push_back(line); });
    const auto look = [&](const Lines& lines, int times = 1) {
        for (int i = 0; i < times; ++i)
            printer.look(lines);
    };
    look({"Agent: Good"});
    look({"Agent: Good day"});
    EXPECT_EQ(printed, Lines{}); // it may still grow
    look({"Agent: Good day"}, 10);
    EXPECT_EQ(printed, Lines{"Agent: Good day"});
    look({"Caller: Yes?", "Agent: Good day, this is Velto."});
    look({"Caller: Yes?", "Agent: Good day, this is Velto.", "Caller: Oh"});
    EXPECT_EQ(printed, (Lines{"Agent: Good day", "Caller: Yes?", "Agent: … , this is Velto."}));
    look({"Caller: Yes?", "Agent: Good day, this is Velto.", "Caller: Oh", "Agent: Good day"}, 4);
    printer.finish(
        {"Caller: Yes?", "Agent: Good day, this is Velto.", "Caller: Oh", "Agent: Good day", "Agent: Bye"});
    EXPECT_EQ(printed, (Lines{"Agent: Good day", "Caller: Yes?", "Agent: … , this is Velto.", "Caller: Oh",
                              "Agent: Good day", "Agent: Bye"}));
}

} // namespace
} // namespace velto::test
