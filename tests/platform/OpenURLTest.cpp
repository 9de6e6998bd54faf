// URLs and files that are handed to other programs. Each opening runs in a process of its own, in the
// environment that it is about.
#include "VeltoPlatform/linux/OpenURL.h"
#include "VeltoPlatform/linux/Bus.h"
#include "VeltoPlatform/linux/RevealFile.h"
#include "rehearsal/PrivateDesktop.h"
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
#include <thread>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

struct Opening : ::testing::Test {
    TemporaryFolder folder;
    rehearsal::Environment environment = *rehearsal::makePrivateFolders(folder.path());
    fs::path seen = folder.path() / "seen";

    void SetUp() override {
        // Says what it got and what it is, then waits to be looked at.
        const auto handler = program("handler", "cd " + folder.path().string() + R"(
echo "$1" >>urls
exec 9>seen.new
printf '%s\n' "$#" "$1" $$ >&9
grep SigBlk /proc/self/status >&9
ls -l /proc/$$/fd >&9
exec 9>&-
mv seen.new seen
exec sleep 60
)");
        registerHandler("phone", "x-scheme-handler/tel-phoneapp", handler.string() + " %u");
    }

    std::unique_ptr<rehearsal::PrivateDesktop> startSession() {
        auto started = rehearsal::PrivateDesktop::start(folder.path(), environment, {});
        environment = (*started)->environment();
        return std::move(*started);
    }
    fs::path program(const std::string& name, const std::string& text) {
        const auto file = folder.path() / name;
        std::ofstream(file) << "#!/bin/sh\n" << text;
        fs::permissions(file, fs::perms::owner_all);
        return file;
    }
    void registerHandler(const std::string& name, const std::string& type, const std::string& command) {
        const auto applications = fs::path(environment.at("XDG_DATA_HOME")) / "applications";
        fs::create_directories(applications);
        std::ofstream(applications / (name + ".desktop"))
            << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=" << command
            << "\nMimeType=" << type << ";\n";
        std::ofstream(applications / "mimeapps.list", std::ios::app) << "[Default Applications]\n"
                                                                     << type << "=" << name << ".desktop\n";
    }
    /// The lines that the handler wrote; waits for it.
    std::vector<std::string> handlerSaw() {
        for (int i = 0; i < 1000 && !fs::exists(seen); ++i)
            std::this_thread::sleep_for(10ms);
        std::istringstream text(readFile(seen));
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    }
    std::optional<rehearsal::ChildProcess> start(const std::string& verb, const std::string& what) {
        return rehearsal::ChildProcess::start(
            {"opener", {"/proc/self/exe", verb, what}, environment, folder.path() / "opener.err"});
    }
    /// What this program answers when it is started anew to open something in the environment.
    bool opens(const std::string& what, const char* verb = "--open") {
        auto opener = start(verb, what);
        EXPECT_TRUE(opener && opener->endsWithin(20s));
        const int status = opener ? opener->exitStatus().value_or(-1) : -1;
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << status;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
};

TEST_F(Opening, TheHandlerGetsTheURLAsItIsAndStandsAlone) {
    const std::string url = "tel-phoneapp:*31#5551234;$(touch x)`id`'\"&|%20 \\";
    ASSERT_TRUE(opens(url));
    const auto lines = handlerSaw();
    ASSERT_GT(lines.size(), 4u);
    EXPECT_EQ(lines[0], "1");
    EXPECT_EQ(lines[1], url);
    const pid_t pid = std::stoi(lines[2]);
    EXPECT_EQ(::getsid(pid), pid);
    EXPECT_NE(lines[3].find("0000000000000000"), std::string::npos) << lines[3];
    // Its own file and its script are open; nothing leads to us.
    for (const auto& line : lines)
        EXPECT_TRUE(line.find("pipe:") == line.npos && line.find("socket:") == line.npos) << line;
    EXPECT_EQ(::kill(pid, SIGKILL), 0);
}

TEST_F(Opening, NothingThatCanBeStartedIsNo) {
    for (const char* url : {"", "tel-phoneapp", "5551234", "-h", "tel-nobody:1", "http://"})
        EXPECT_FALSE(opens(url)) << url;
    registerHandler("gone", "x-scheme-handler/tel-gone", (folder.path() / "gone").string() + " %u");
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
    ASSERT_TRUE(opener);
    std::vector<std::string> answer;
    for (int i = 0; i < 2000 && answer.empty(); ++i) {
        answer = opener->readLines();
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_EQ(answer, std::vector<std::string>{"no"});
    bus.signal(SIGCONT);
    // Afterwards the same process opens another URL over the same bus: by then the first would have come.
    opener->signal(SIGUSR1);
    const auto lines = handlerSaw();
    ASSERT_GT(lines.size(), 3u);
    EXPECT_EQ(readFile(folder.path() / "urls"), "tel-phoneapp:1later\n");
    ::kill(std::stoi(lines[2]), SIGKILL);
}

TEST_F(Opening, AFileIsShownByTheFileManagerOrItsFolderIs) {
    const auto file = folder.path() / "tmp" / "a b%.txt";
    std::ofstream(file) << "x";
    EXPECT_FALSE(opens(file, "--reveal"));
    registerHandler("folders", "inode/directory", (folder.path() / "handler").string() + " %u");
    EXPECT_FALSE(opens(folder.path() / "tmp" / "missing", "--reveal"));
    ASSERT_TRUE(opens(file, "--reveal"));
    const auto lines = handlerSaw();
    ASSERT_GT(lines.size(), 3u);
    EXPECT_TRUE(lines[1].ends_with((folder.path() / "tmp").string())) << lines[1];
    ::kill(std::stoi(lines[2]), SIGKILL);

    const auto desktop = startSession();
    fs::remove(seen);
    const auto manager = Bus::open(desktop->busAddress(), 2s);
    ASSERT_TRUE(manager);
    std::string shown;
    sd_bus_add_filter(
        manager->handle(), nullptr,
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
    sd_bus_request_name(manager->handle(), "org.freedesktop.FileManager1", 0);
    std::atomic<bool> ending = false;
    std::thread serving([&] {
        while (!ending)
            manager->process(10ms);
    });
    EXPECT_TRUE(opens(file, "--reveal"));
    ending = true;
    serving.join();
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
