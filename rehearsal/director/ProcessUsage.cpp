// What a process costs.
#include "rehearsal/director/ProcessUsage.h"

#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

namespace velto::rehearsal {

std::optional<ProcessUsage> processUsage(pid_t pid) {
    const auto folder = "/proc/" + std::to_string(pid) + "/";
    std::ifstream stat(folder + "stat");
    std::string line;
    std::getline(stat, line);
    const auto name = line.rfind(')');
    if (name == std::string::npos)
        return {};
    // After the name: state, then ten numbers, then the clock ticks of user and system (proc(5)).
    std::istringstream fields(line.substr(name + 1));
    std::string skipped;
    for (int i = 0; i < 11; ++i)
        fields >> skipped;
    double user = 0;
    double system = 0;
    fields >> user >> system;
    std::ifstream memory(folder + "statm");
    double total = 0;
    double resident = 0;
    memory >> total >> resident;
    if (!fields || !memory)
        return {};
    return ProcessUsage{(user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK)),
                        resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6,
                        std::chrono::steady_clock::now()};
}

double cpuPercent(const ProcessUsage& from, const ProcessUsage& to) {
    const double elapsed = std::chrono::duration<double>(to.at - from.at).count();
    return elapsed > 0 ? 100 * (to.cpuSeconds - from.cpuSeconds) / elapsed : 0;
}

} // namespace velto::rehearsal
