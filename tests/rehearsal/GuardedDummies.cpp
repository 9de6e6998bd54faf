// A director with two programs, one of which has a child that escapes its parent; for guardian.sh.
#include "rehearsal/director/Guardian.h"
#include "rehearsal/director/Stage.h"

#include <unistd.h>

#include <iostream>

using namespace velto::rehearsal;

namespace {

/// Says the folder and the processes, in the order that guardian.sh reads them, and waits for what happens.
int direct(const GuardianLink& guardian) {
    Stage stage(guardian);
    bool hasEscaped = false;
    const auto start = [&](const char* title, const char* script) {
        return stage
            .add({title,
                  {"/bin/sh", "-c", script},
                  {{"PATH", "/usr/bin:/bin"}, {"GUARDED_FOLDER", guardian.folder()}},
                  guardian.folder() / "err"},
                 [&](const boost::json::object&) { hasEscaped = true; })
            ->pid();
    };
    const auto first = start("first", "exec sleep 300");
    const auto second =
        start("second", "trap '' TERM; setsid sleep 300 & echo '{\"up\":1}'; sleep 300; true");
    stage.waitUntil([&] { return hasEscaped; }, std::chrono::seconds(30));
    std::cout << guardian.folder().string() << ' ' << ::getpid() << ' ' << first << ' ' << second
              << std::endl;
    stage.waitUntil([] { return false; }, std::chrono::seconds(30));
    std::cerr << stage.failure() << '\n';
    stage.end();
    if (stage.guardianGone())
        guardian.cleanUp();
    return stage.stopCode() != 0 ? stage.stopCode() : 1;
}

} // namespace

int main(int argc, char**) {
    return runGuarded({.keepFolder = argc > 1}, direct);
}
