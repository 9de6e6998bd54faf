// Which processes are sent SIGUSR1.
#include "VeltoPlatform/linux/AskToReload.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace velto {
namespace {

/// How a child ends that handles SIGUSR1 so, after it was asked to reload and then told to end.
struct Asked {
    bool answer = false;
    int status = 0;
};

Asked ask(void (*handler)(int), const char* program) {
    int ready[2];
    EXPECT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        // What it does at SIGUSR1, it does before SIGTERM ends it.
        struct sigaction action {};
        action.sa_handler = handler;
        ::sigfillset(&action.sa_mask);
        ::sigaction(SIGUSR1, &action, nullptr);
        static_cast<void>(::write(ready[1], "r", 1) == 1);
        for (;;)
            ::pause();
    }
    char byte = 0;
    EXPECT_EQ(::read(ready[0], &byte, 1), 1);
    ::close(ready[0]);
    ::close(ready[1]);
    Asked asked;
    asked.answer = askToReload(child, program);
    ::kill(child, SIGTERM);
    ::waitpid(child, &asked.status, 0);
    return asked;
}

void reload(int) {
    ::_exit(7);
}

TEST(AskToReload, OnlyTheProgramThatCatchesIt) {
    const auto told = ask(reload, "ask_to_reload_test");
    EXPECT_TRUE(told.answer);
    EXPECT_TRUE(WIFEXITED(told.status) && WEXITSTATUS(told.status) == 7) << told.status;
    for (const auto& left :
         {ask(reload, "velto"), ask(SIG_DFL, "ask_to_reload_test"), ask(SIG_IGN, "ask_to_reload_test")}) {
        EXPECT_FALSE(left.answer);
        EXPECT_TRUE(WIFSIGNALED(left.status) && WTERMSIG(left.status) == SIGTERM) << left.status;
    }
    EXPECT_FALSE(askToReload(0, "ask_to_reload_test"));
    EXPECT_FALSE(askToReload(-1, "ask_to_reload_test"));
}

} // namespace
} // namespace velto
