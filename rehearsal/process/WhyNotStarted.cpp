#include "rehearsal/process/WhyNotStarted.h"

#include "rehearsal/process/TextFile.h"

#include <sys/wait.h>

#include <deque>
#include <sstream>

namespace velto::rehearsal {
namespace {

constexpr std::size_t kLines = 5;
constexpr int kCannotBeExecuted = 127;

std::string lastLines(const std::filesystem::path& log) {
    std::deque<std::string> last;
    std::istringstream text(readFile(log).value_or(""));
    for (std::string line; std::getline(text, line);) {
        if (line.empty())
            continue;
        last.push_back(line);
        if (last.size() > kLines)
            last.pop_front();
    }
    std::string answer = last.empty() ? "" : "; it said:";
    for (const auto& line : last)
        answer += "\n  " + line;
    return answer;
}

} // namespace

std::string whyNotStarted(ChildProcess& process, const std::filesystem::path& log) {
    if (const auto status = process.exitStatus();
        status && WIFEXITED(*status) && WEXITSTATUS(*status) == kCannotBeExecuted)
        return "; is it installed?";
    return lastLines(log);
}

std::string whyNotStarted(std::optional<ChildProcess>& process, const std::filesystem::path& log) {
    return process ? whyNotStarted(*process, log) : lastLines(log);
}

} // namespace velto::rehearsal
