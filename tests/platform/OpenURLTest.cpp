// URLs and files that are handed to other programs. Each opening runs in a process of its own, in the
// environment that it is about.
#include "VeltoPlatform/linux/OpenURL.h"
#include "VeltoPlatform/linux/Bus.h"
#include "VeltoPlatform/linux/RevealFile.h"
#include "rehearsal/PrivateDesktop.h"
#include "tests/support/Eventually.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <iostream>
#include <sstream>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

struct Opening : ::testing::Test {
    TemporaryFolder folder;
    rehearsal::Environment environment = *rehearsal::makePrivateFolders(folder.path());
    fs::path seen = folder.path() / "seen";
    std::unique_ptr<Bus> fileManager;

    void SetUp() override {
        // Says what it got and what it is.
        writeProgram(folder.path() / "handler", "cd " + folder.path().string() + R"sh(
echo "$1" >>urls
exec 9>seen.new
printf '%s\n' "$#" "$1" "session $(($(cut -d' ' -f6 /proc/$$/stat) - $$))" >&9
grep SigBlk /proc/self/status >&9
ls -l /proc/$$/fd >&9
exec 9>&-
mv seen.new seen)sh");
        registerHandler("phone", "x-scheme-handler/tel-phoneapp", "handler");
    }

    std::unique_ptr<rehearsal::PrivateDesktop> startSession() {
        auto started = rehearsal::PrivateDesktop::start(folder.path(), environment, {});
        environment = (*started)->environment();
        return std::move(*started);
    }
    void registerHandler(const std::string& name, const std::string& type, const std::string& program) {
        const auto applications = fs::path(environment.at("XDG_DATA_HOME")) / "applications";
        fs::create_directories(applications);
        std::ofstream(applications / (name + ".desktop"))
            << "[Desktop Entry]\nType=Application\nName=" << name
            << "\nExec=" << (folder.path() / program).string() << " %u\nMimeType=" << type << ";\n";
        std::ofstream(applications / "mimeapps.list", std::ios::app) << "[Default Applications]\n"
                                                                     << type << "=" << name << ".desktop\n";
    }
    /// The lines that the handler wrote, at least five; waits for it.
    Lines handlerSaw() {
        EXPECT_TRUE(eventually([&] { return fs::exists(seen); }));
        std::istringstream text(readFile(seen));
        Lines lines;
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        EXPECT_GT(lines.size(), 4u);
        lines.resize(std::max<std::size_t>(lines.size(), 5));
        return lines;
    }
    rehearsal::ChildProcess start(const std::string& verb, const std::string& what) {
        return *rehearsal::ChildProcess::start(
            {"opener", {"/proc/self/exe", verb, what}, environment, folder.path() / "opener.err"});
    }
    /// What this program answers when it is started anew to open something in the environment.
    bool opens(const std::string& what, const char* verb = "--open") {
        auto opener = start(verb, what);
        EXPECT_TRUE(eventually([&] {
            if (fileManager)
                fileManager->process(1ms);
            return opener.endsWithin(0ms);
        }));
        const int status = opener.exitStatus().value_or(-1);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << status;
        return status == 0;
    }
};

TEST_F(Opening, TheHandlerGetsTheURLAsItIsAndStandsAlone) {
    const std::string url = "tel-phoneapp:*31#5551234;$(touch x)`id`'\"&|%20 \\";
    ASSERT_TRUE(opens(url));
    const auto lines = handlerSaw();
    EXPECT_EQ(lines[0], "1");
    EXPECT_EQ(lines[1], url);
    EXPECT_EQ(lines[2], "session 0") << "which it leads";
    EXPECT_NE(lines[3].find("0000000000000000"), std::string::npos) << lines[3];
    // Its own file and its script are open; nothing leads to us.
    for (const auto& line : lines)
        EXPECT_TRUE(line.find("pipe:") == line.npos && line.find("socket:") == line.npos) << line;
}

TEST_F(Opening, NothingThatCanBeStartedIsNo) {
    for (const char* url : {"", "tel-phoneapp", "5551234", "-h", "tel-nobody:1", "http://"})
        EXPECT_FALSE(opens(url)) << url;
    registerHandler("gone", "x-scheme-handler/tel-gone", "gone");
    EXPECT_FALSE(opens("tel-gone:1"));
    EXPECT_FALSE(openURL(std::string("tel-phoneapp:\0", 14)));
    EXPECT_FALSE(fs::exists(seen));
}

TEST_F(Opening, AStoppedBusHoldsNobodyAndNothingOpensLater) {
    const auto desktop = startSession();
    auto& bus = *desktop->bus();
    bus.signal(SIGSTOP);
    EXPECT_FALSE(opens("tel-phoneapp:0", "--open-within-limit")); // and ends, although its thread waits
    auto opener = start("--open-and-stay", "tel-phoneapp:1");
    EXPECT_EQ(nextLine(opener, [] {}), "no");
    bus.signal(SIGCONT);
    // Afterwards the same process opens another URL over the same bus: by then the first would have come.
    opener.signal(SIGUSR1);
    handlerSaw();
    EXPECT_EQ(readFile(folder.path() / "urls"), "tel-phoneapp:1later\n");
}

TEST_F(Opening, AFileIsShownByTheFileManagerOrItsFolderIs) {
    const auto file = folder.path() / "tmp" / "a b%.txt";
    std::ofstream(file) << "x";
    EXPECT_FALSE(opens(file, "--reveal"));
    registerHandler("folders", "inode/directory", "handler");
    EXPECT_FALSE(opens(folder.path() / "tmp" / "missing", "--reveal"));
    ASSERT_TRUE(opens(file, "--reveal"));
    const auto opened = handlerSaw()[1];
    EXPECT_TRUE(opened.ends_with((folder.path() / "tmp").string())) << opened;

    const auto desktop = startSession();
    fs::remove(seen);
    fileManager = Bus::open(desktop->busAddress(), 2s);
    ASSERT_TRUE(fileManager);
    std::string shown;
    sd_bus_add_filter(
        fileManager->handle(), nullptr,
        [](sd_bus_message* message, void* data, sd_bus_error*) {
            if (sd_bus_message_is_method_call(message, "org.freedesktop.FileManager1", "ShowItems") <= 0)
                return 0;
            const char* url = nullptr;
            sd_bus_message_enter_container(message, 'a', "s");
            sd_bus_message_read(message, "s", &url);
            *static_cast<std::string*>(data) = url;
            return sd_bus_reply_method_return(message, "");
        },
        &shown);
    sd_bus_request_name(fileManager->handle(), "org.freedesktop.FileManager1", 0);
    EXPECT_TRUE(opens(file, "--reveal"));
    EXPECT_EQ(shown, "file://" + (folder.path() / "tmp").string() + "/a%20b%25.txt");
    EXPECT_FALSE(fs::exists(seen));
}

/// Opens in the environment that this process was started with; 2: a child stayed with us.
int open(const std::string& verb, const std::string& what) {
    // Two things that must not pass on: a blocked signal and an open pipe.
    sigset_t later;
    ::sigemptyset(&later);
    ::sigaddset(&later, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &later, nullptr);
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return 3;

    if (verb == "--open-and-stay") {
        std::cout << (openURL(what) ? "yes" : "no") << std::endl;
        int number = 0;
        ::sigwait(&later, &number);
        openURL(what + "later", 10s);
        ::pause();
    }
    bool opened = false;
    if (verb == "--reveal")
        opened = revealFile(what, 10s);
    else
        opened = verb == "--open" ? openURL(what, 10s) : openURL(what);
    if (::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD)
        return 2;
    return opened ? 0 : 1;
}

} // namespace
} // namespace velto::test

int main(int argc, char** argv) {
    if (argc == 3)
        return velto::test::open(argv[1], argv[2]);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
