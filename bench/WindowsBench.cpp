// The windowed program from its start to its first frame, its memory with both windows open, and what it does
// when nothing happens: drawn by the program's own choice, and beside it with a graphics driver (Mesa's).
#include "rehearsal/PrivateDesktop.h"
#include "rehearsal/process/TextFile.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <thread>
#include <vector>

namespace velto {
namespace {

using namespace std::chrono_literals;
using rehearsal::ChildProcess;
using Clock = std::chrono::steady_clock;

constexpr int kStarts = 20;
constexpr auto kIdle = 5s;

double since(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// Sums the numbers behind a key in a file of /proc.
long number(const std::filesystem::path& file, const std::string& key) {
    std::istringstream lines(rehearsal::readFile(file).value_or(""));
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(key))
            return std::atol(line.c_str() + key.size());
    return 0;
}

/// Of all threads.
long switches(const std::filesystem::path& process) {
    long sum = 0;
    for (const auto& task : std::filesystem::directory_iterator(process / "task"))
        sum += number(task.path() / "status", "voluntary_ctxt_switches:");
    return sum;
}

/// User and system, ms.
long processorTime(const std::filesystem::path& process) {
    const auto stat = rehearsal::readFile(process / "stat").value_or("");
    std::istringstream fields(stat.substr(std::min(stat.size(), stat.rfind(')') + 1)));
    std::string skipped;
    for (int i = 0; i < 11; ++i)
        fields >> skipped;
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return (user + system) * 1000 / ::sysconf(_SC_CLK_TCK);
}

struct Figures {
    double median = 0;
    double worst = 0;
};

/// A first run, which opens both windows; none when a start shows nothing.
std::optional<Figures> measure(const rehearsal::PrivateDesktop& desktop, const std::filesystem::path& folder,
                               const char* title, const rehearsal::Environment& extra) {
    std::vector<double> starts;
    for (int round = 0; round < kStarts; ++round) {
        const auto home = folder / (std::string(title) + std::to_string(round));
        auto own = rehearsal::makePrivateFolders(home);
        if (!own)
            return {};
        (*own)["DBUS_SESSION_BUS_ADDRESS"] = desktop.busAddress();
        (*own)["DISPLAY"] = desktop.display();
        (*own)["QT_FORCE_STDERR_LOGGING"] = "1";
        (*own)["QT_LOGGING_RULES"] = "qt.scenegraph.time.renderloop.debug=true";
        for (const auto& [name, value] : extra)
            (*own)[name] = value;
        rehearsal::ChildProgram program;
        program.title = title;
        // Standard error is what Qt tells of its frames on.
        program.arguments = {"/bin/sh", "-c", "exec " VELTO_PROGRAM " 2>&1"};
        program.environment = *own;
        const auto begin = Clock::now();
        auto process = ChildProcess::start(program);
        bool shown = false;
        while (process && !shown && since(begin) < 20'000) {
            for (const auto& line : process->readLines())
                shown = shown || line.find("rame rendered") != std::string::npos;
            std::this_thread::sleep_for(1ms);
        }
        if (!shown)
            return {};
        starts.push_back(since(begin));
        if (round + 1 == kStarts) {
            std::this_thread::sleep_for(3s);
            const std::filesystem::path proc = "/proc/" + std::to_string(process->pid());
            const auto rollup = proc / "smaps_rollup";
            std::printf("%s: both windows open: %.0f MB resident, %.0f MB its share (aim: at most 120)\n",
                        title, static_cast<double>(number(rollup, "Rss:")) / 1000,
                        static_cast<double>(number(rollup, "Pss:")) / 1000);
            const long time = processorTime(proc);
            const long woken = switches(proc);
            std::this_thread::sleep_for(kIdle);
            std::printf("%s: 5 s of nothing: %ld ms of processor time (aim: none), %ld wake-ups\n", title,
                        processorTime(proc) - time, switches(proc) - woken);
        }
        process->stop();
    }
    std::ranges::sort(starts);
    std::printf("%s: start to first frame: median %.0f ms, worst %.0f ms of %d (aim: at most 400)\n", title,
                starts[starts.size() / 2], starts.back(), kStarts);
    return Figures{starts[starts.size() / 2], starts.back()};
}

int run(const std::filesystem::path& folder) {
    const auto folders = rehearsal::makePrivateFolders(folder / "d");
    if (!folders)
        return 1;
    const auto desktop = rehearsal::PrivateDesktop::start(folder / "d", *folders, {.display = true});
    if (!desktop) {
        std::fprintf(stderr, "%s\n", desktop.error().description.c_str());
        return 1;
    }
    const auto ours = measure(**desktop, folder, "velto", {});
    const auto driver = measure(**desktop, folder, "with-driver", {{"QSG_RHI_BACKEND", "opengl"}});
    if (!ours || !driver)
        return 1;
    std::printf("ratio of the medians: %.2f\n", ours->median / driver->median);
    return 0;
}

} // namespace
} // namespace velto

int main() {
    std::string folder = "/tmp/velto-bench-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        return 1;
    const int status = velto::run(folder);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return status;
}
