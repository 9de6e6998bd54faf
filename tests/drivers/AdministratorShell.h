// Runs lines as an administrator's runner does: /bin/sh in a clean environment.
#pragma once

#include "VeltoApp/app/Helper.h"
#include "VeltoPlatform/ShellWord.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace velto::test {

/// For the user `forWhom`. Answers standard output, which is what the application gets to see, and the
/// shell's exit status.
inline Helper::Result runInShell(const std::string& line, uid_t forWhom,
                                 const std::string& path = "/usr/sbin:/usr/bin:/sbin:/bin") {
    const auto command = "cd / && exec env -i PKEXEC_UID=" + std::to_string(forWhom) +
                         " PATH=" + shellWord(path) + " /bin/sh -c " + shellWord(line) + " 2>/dev/null";
    Helper::Result result;
    FILE* const pipe = ::popen(command.c_str(), "re");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        result.stdout += static_cast<char>(c);
    result.status = WEXITSTATUS(::pclose(pipe));
    return result;
}

} // namespace velto::test
