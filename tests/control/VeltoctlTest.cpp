// The command line's program against a server: exits, what goes where, following.
#include "tests/control/ServerFixture.h"
#include "veltoctl/TranscriptPrinter.h"

#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

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

    /// `arguments` and `redirection` as a shell would read them.
    Run veltoctl(const std::string& arguments, const std::string& redirection = ">out 2>err") const {
        const auto program = fs::read_symlink("/proc/self/exe").parent_path() / "veltoctl";
        const auto command =
            "cd '" + computer.root().string() +
            "' && rm -f out err && echo $$ >pid && exec env --default-signal=INT TZ=HERE-2 "
            "DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere PULSE_SERVER=unix:/nowhere "
            "XDG_CONFIG_HOME=\"$PWD/config\" XDG_DATA_HOME=\"$PWD/Library/Application Support\" '" +
            program.string() + "' " + arguments + " " + redirection;
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                readFile(computer.root() / "out"), readFile(computer.root() / "err")};
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
    const auto id = [this](std::size_t call) {
        std::string text;
        onMain([&] { text = history->records()[call].id.text().substr(0, 8); });
        return text;
    };
    EXPECT_EQ(veltoctl("ping").out, "Velto is running.\n");
    EXPECT_EQ(veltoctl("status").out,
              "State     live\nRunning   no\nNumber    +1\xEF\xBF\xBD[2J\nSession   -\n"
              "Provider  openai\nReady     yes\n");
    EXPECT_EQ(veltoctl("history").out,
              id(0) +
                  "  2026-11-16 22:23:20 HERE   1:02  +15551234567\n    Caller: hi\n    Agent: hello\n\n" +
                  id(1) + "  2026-11-16 22:23:20 HERE  62:05  (no number)\n");
    EXPECT_EQ(veltoctl("history --last 1").out.find("62:05"), std::string::npos);
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
    for (const auto* wrong :
         {"", "dial", "call", "call 1", "call '' --goal x", "ping now", "status --follow", "history show",
          "history --last 0", "key set", "wait 1", "call 1 --goal \"$(printf '\\377')\"", "--nothing"}) {
        const auto run = veltoctl(wrong);
        EXPECT_EQ(run.exit, 2) << wrong;
        EXPECT_EQ(run.out, "") << wrong;
        EXPECT_TRUE(run.err.starts_with("veltoctl: ")) << run.err;
    }
    EXPECT_EQ(veltoctl("status", ">/dev/full 2>err").exit, 2);
    fs::remove(path());
    const auto run = veltoctl("ping");
    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.err, "veltoctl: Velto is not running, or does not answer\n");
}

TEST_F(VeltoctlTest, aStartThatFailsAtOnceIsRefused) {
    onMain([&] { session->startWorks = false; });
    EXPECT_EQ(veltoctl("call 1 --goal x --follow").out, "");
    const auto run = veltoctl("call 1 --goal x --follow --json");
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.out, "{\"ok\":true,\"state\":\"error\"}\n{\"outcome\":\"error\"}\n");
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
    const auto run = veltoctl("call 1 --goal x --follow", ">out 2>&1");
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "veltoctl: idle\nCaller: Hi\nAgent: Hello\nCaller: Bye\nveltoctl: ended\n");
    const auto after = veltoctl("transcript --follow"); // nothing runs: it ends at once
    EXPECT_EQ(after.out, "Caller: Hi\nAgent: Hello\nCaller: Bye\n");
    EXPECT_EQ(after.err, "veltoctl: ended\n");
    EXPECT_EQ(veltoctl("transcript --follow --json").out,
              "{\"state\":\"ended\",\"session\":1,\"number\":\"1\"}\n{\"line\":\"Caller: Hi\"}\n"
              "{\"line\":\"Agent: Hello\"}\n{\"line\":\"Caller: Bye\"}\n{\"outcome\":\"ended\"}\n");
    EXPECT_EQ(veltoctl("wait").exit, 0);
    EXPECT_EQ(veltoctl("transcript --follow --quiet").err, "");
    onMain([&] { session->transcriptAt = {}; });
    EXPECT_EQ(veltoctl("wait --json").out, "{\"outcome\":\"error\"}\n") << "nobody said a word";
    onMain([&] { session->stateText = "error"; });
    EXPECT_EQ(veltoctl("wait").exit, 1);
    onMain([&] { session->stateText = "idle"; });
    EXPECT_EQ(veltoctl("wait --json").out, "{\"outcome\":\"none\"}\n");
    EXPECT_EQ(veltoctl("wait").exit, 3);
    const std::function<void()> ends[] = {
        [this] { session->session = 0; }, // and it was started again
        [this] { fs::remove(path()); },
    };
    for (const auto& end : ends) {
        onMain([&] {
            session->isRunning = true;
            session->session = 2;
            session->looks = 0;
            session->transcriptAt = [&end](int look) -> Lines {
                if (look == 2) // the first is the command's own
                    end();
                return {};
            };
        });
        EXPECT_EQ(veltoctl("transcript --follow").exit, 4);
    }
}

TEST_F(VeltoctlTest, anInterruptEndsTheFollowingAndTheSessionOnlyWhereAskedTo) {
    const auto interrupt = [this] { ::kill(std::stoi(readFile(computer.root() / "pid")), SIGINT); };
    for (const auto& [starting, hangsUp] :
         {std::pair{false, false}, std::pair{false, true}, std::pair{true, true}}) {
        onMain([&] {
            session->isRunning = false;
            session->stops = session->looks = 0;
            session->started = starting ? interrupt : std::function<void()>();
            session->transcriptAt = [&](int look) -> Lines {
                if (look == 1 && !starting)
                    interrupt();
                return {};
            };
        });
        const auto run =
            veltoctl(std::string("call 1 --goal x --follow") + (hangsUp ? " --hangup-on-interrupt" : ""));
        EXPECT_EQ(run.exit, 130);
        EXPECT_NE(run.err.find(hangsUp ? "is stopped" : "\"veltoctl hangup\""), std::string::npos);
        onMain([&] { EXPECT_EQ(session->stops, hangsUp ? 1 : 0); });
    }
}

TEST_F(VeltoctlTest, showsOneCallWithoutTheApplication) {
    onMain([&] {
        for (const auto* first : {"A1", "A2"})
            history->insertFirst(
                {.id = *UUID::parse(std::string(first) + "000000-0000-4000-8000-000000000000"),
                 .number = "+1555",
                 .started = {816'553'400},
                 .duration = 61,
                 .transcript = "Caller: hi",
                 .recordingPath = "/r/1.wav"});
    });
    fs::remove(path());
    EXPECT_EQ(veltoctl("history show a1").out,
              "ID         A1000000-0000-4000-8000-000000000000\nNumber     +1555\n"
              "Started    2026-11-16 22:23:20 HERE\nDuration   1:01\nRecording  /r/1.wav\n\nCaller: hi\n");
    EXPECT_EQ(veltoctl("history show A").exit, 1);
    EXPECT_EQ(veltoctl("history show B").exit, 1);
    EXPECT_NE(veltoctl("history --last 1 --json").out.find("A2000000"), std::string::npos);
}

TEST_F(VeltoctlTest, keysAreReadFromStandardInputOnly) {
    for (const auto* wrong : {"key set gemini sk-secret", "key set sk-secret", "key remove openai sk-secret",
                              "key set gemini --json=sk-secret"}) {
        const auto run = veltoctl(wrong);
        EXPECT_EQ(run.exit, 2) << wrong;
        EXPECT_NE(run.err.find("never an argument"), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find("sk-secret"), std::string::npos);
    }
    for (const auto* nothing : {"", "sk\x1b[D-secret", "sk secret"}) {
        std::ofstream(computer.root() / "typed") << nothing << '\n';
        const auto run = veltoctl("key set gemini <typed");
        EXPECT_EQ(run.exit, 2);
        EXPECT_NE(run.err.find("nothing was changed"), std::string::npos) << run.err;
    }
    EXPECT_EQ(veltoctl("key list").exit, 2) << "no keyring";
    std::ofstream(computer.root() / "typed") << " sk-secret \r\n";
    EXPECT_EQ(veltoctl("key set gemini <typed").exit, 2);
    const auto settings = computer.root() / "config" / "org.velto.Velto";
    fs::create_directories(settings);
    std::ofstream(settings / "preferences.json") << R"({"unencryptedKeyFile": true})";
    const auto stored = veltoctl("key set gemini <typed");
    EXPECT_EQ(stored.exit, 0) << stored.err;
    EXPECT_NE(stored.err.find("could not be told"), std::string::npos) << "who listens is no velto";
    EXPECT_EQ(veltoctl("key list --json").out, "{\"gemini\":true,\"openai\":false}\n");
    EXPECT_NE(readFile(AppPaths::support() / "keys" / "keys.json").find("c2stc2VjcmV0\""), std::string::npos)
        << "without the blanks, in base64";
    EXPECT_EQ(veltoctl("key remove gemini").exit, 0);
    EXPECT_EQ(veltoctl("key remove gemini").exit, 1);
    const auto checks = veltoctl("doctor --json");
    EXPECT_EQ(checks.exit, 1);
    EXPECT_NE(checks.out.find(R"({"check":"application","result":"ok")"), std::string::npos) << checks.out;
    EXPECT_NE(checks.out.find(R"({"check":"sound-server","result":"missing")"), std::string::npos)
        << checks.out;
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
