// Which processes are sent SIGUSR1.
#include "VeltoPlatform/linux/AskToReload.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace velto {
namespace {

/// What is answered, and how a child ends that handles SIGUSR1 so and is told to end afterwards.
std::pair<bool, int> ask(void (*handler)(int), const char* program) {
    // What it does at SIGUSR1, which is delivered first, it does before it ends at SIGTERM.
    struct sigaction action {};
    action.sa_handler = handler;
    ::sigfillset(&action.sa_mask);
    ::sigaction(SIGUSR1, &action, nullptr);
    ::signal(SIGTERM, [](int) { ::_exit(0); });
    const pid_t child = ::fork();
    while (child == 0)
        ::pause();
    ::signal(SIGUSR1, SIG_DFL);
    ::signal(SIGTERM, SIG_DFL);
    const bool answer = askToReload(child, program);
    int status = -1;
    ::kill(child, SIGTERM);
    ::waitpid(child, &status, 0);
    return {answer, WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

void reload(int) {
    ::_exit(7);
}

TEST(AskToReload, OnlyTheProgramThatCatchesIt) {
    EXPECT_EQ(ask(reload, "ask_to_reload_test"), std::pair(true, 7));
    EXPECT_EQ(ask(reload, "velto"), std::pair(false, 0));
    EXPECT_EQ(ask(SIG_DFL, "ask_to_reload_test"), std::pair(false, 0));
    EXPECT_EQ(ask(SIG_IGN, "ask_to_reload_test"), std::pair(false, 0));
    EXPECT_FALSE(askToReload(0, "ask_to_reload_test"));
    EXPECT_FALSE(askToReload(-1, "ask_to_reload_test"));
}

} // namespace
} // namespace velto
