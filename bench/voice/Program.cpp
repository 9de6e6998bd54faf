#include "bench/voice/Program.h"

#include "rehearsal/process/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

namespace velto::bench {

using namespace std::chrono_literals;

Finished runProgram(std::vector<std::string> arguments, const std::map<std::string, std::string>& more,
                    std::chrono::seconds limit) {
    auto environment = more;
    for (char** each = environ; *each != nullptr; ++each) {
        const std::string text(*each);
        const auto end = text.find('=');
        environment.emplace(text.substr(0, end), text.substr(end + 1));
    }
    Finished finished;
    auto child = rehearsal::ChildProcess::start({arguments[0], std::move(arguments), environment, {}});
    if (!child)
        return finished;
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!child->endsWithin(100ms) && std::chrono::steady_clock::now() < end)
        for (auto& line : child->readLines())
            finished.lines.push_back(std::move(line));
    for (auto& line : child->readLines())
        finished.lines.push_back(std::move(line));
    const auto status = child->exitStatus();
    if (status && WIFEXITED(*status))
        finished.code = WEXITSTATUS(*status);
    return finished;
}

} // namespace velto::bench
