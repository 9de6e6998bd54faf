// The windowed program from its start to its first frame, its memory with both windows open, and what it does
// when nothing happens: drawn by the program's own choice, and beside it with a graphics driver (Mesa's) and
// the least that Qt Quick can do. The program without windows when nothing happens. The longest frames.
#include "rehearsal/PrivateDesktop.h"
#include "rehearsal/PrivateSoundServer.h"
#include "rehearsal/director/ProcessUsage.h"
#include "rehearsal/process/TextFile.h"
#include "tests/support/TemporaryFolder.h"

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
constexpr int kWidth = 1920;
constexpr int kHeight = 1200;

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

std::filesystem::path procOf(pid_t process) {
    return "/proc/" + std::to_string(process);
}

void tellIdle(const char* title, pid_t process) {
    const auto proc = procOf(process);
    const auto seconds = [process] {
        return rehearsal::processUsage(process).value_or(rehearsal::ProcessUsage{}).cpuSeconds;
    };
    const double time = seconds();
    const long woken = switches(proc);
    std::this_thread::sleep_for(kIdle);
    std::printf("%s: 5 s of nothing: %.0f ms of processor time, %ld wake-ups (aim: none)\n", title,
                1000 * (seconds() - time), switches(proc) - woken);
}

void tellMemory(const char* title, pid_t process, const char* aim = "") {
    const auto rollup = procOf(process) / "smaps_rollup";
    std::printf("%s: %.0f MB resident, %.0f MB its share%s\n", title,
                static_cast<double>(number(rollup, "Rss:")) / 1000,
                static_cast<double>(number(rollup, "Pss:")) / 1000, aim);
}

class Bench {
  public:
    Bench(std::filesystem::path folder, rehearsal::Environment session)
        : folder_(std::move(folder)), session_(std::move(session)) {}

    /// The median of a window's starts, ms; of Velto a first run, which opens both windows. None when one
    /// shows nothing.
    std::optional<double> starts(const char* title, const std::string& program,
                                 const rehearsal::Environment& extra = {}) {
        std::vector<double> starts;
        for (int round = 0; round < kStarts; ++round) {
            const auto begin = Clock::now();
            auto process = start(title, {program}, extra);
            if (!process || !shows(*process, begin))
                return {};
            starts.push_back(since(begin));
            if (round + 1 == kStarts) {
                std::this_thread::sleep_for(3s);
                tellMemory(title, process->pid(),
                           program == VELTO_PROGRAM ? " (both windows open; aim: at most 120)" : "");
                tellIdle(title, process->pid());
            }
            process->stop();
        }
        std::ranges::sort(starts);
        const double median = starts[starts.size() / 2];
        std::printf("%s: start to first frame: median %.0f ms, worst %.0f ms of %d (aim: at most 400)\n",
                    title, median, starts.back(), kStarts);
        std::fflush(stdout);
        return median;
    }

    void headless() {
        auto process = start("headless", {VELTO_PROGRAM, "--headless"}, {});
        if (!process)
            return;
        std::this_thread::sleep_for(3s);
        tellMemory("velto --headless", process->pid());
        tellIdle("velto --headless", process->pid());
        process->stop();
    }

    /// What `velto-frames` says.
    bool frames(const char* scale) {
        auto process = start("frames", {VELTO_FRAMES, std::to_string(kWidth), std::to_string(kHeight)},
                             {{"QT_SCALE_FACTOR", scale}, {"QT_LOGGING_RULES", ""}});
        if (!process)
            return false;
        std::printf("a window of %d x %d at scale %s:\n", kWidth, kHeight, scale);
        const auto tell = [&] {
            for (const auto& line : process->readLines())
                std::printf("  %s\n", line.c_str());
            std::fflush(stdout);
        };
        while (!process->endsWithin(100ms))
            tell();
        tell();
        return process->exitStatus() == 0;
    }

  private:
    static bool shows(ChildProcess& process, Clock::time_point begin) {
        while (since(begin) < 20'000) {
            for (const auto& line : process.readLines())
                if (line.find("rame rendered") != std::string::npos)
                    return true;
            std::this_thread::sleep_for(1ms);
        }
        return false;
    }
    std::optional<ChildProcess> start(const char* title, std::vector<std::string> arguments,
                                      const rehearsal::Environment& extra) {
        const auto own = rehearsal::makePrivateFolders(folder_ / std::to_string(++runs_));
        if (!own)
            return {};
        rehearsal::ChildProgram program;
        program.title = title;
        program.environment = *own;
        for (const auto& some : {session_, extra})
            for (const auto& [name, value] : some)
                program.environment[name] = value;
        // Standard error is what Qt tells of its frames on.
        program.arguments = {"/bin/sh", "-c", "exec \"$@\" 2>&1", "sh"};
        std::ranges::move(arguments, std::back_inserter(program.arguments));
        return ChildProcess::start(program);
    }

    std::filesystem::path folder_;
    rehearsal::Environment session_;
    int runs_ = 0;
};

int run(const std::filesystem::path& folder) {
    const auto folders = rehearsal::makePrivateFolders(folder / "d");
    if (!folders)
        return 1;
    const auto desktop = rehearsal::PrivateDesktop::start(
        folder / "d", *folders,
        {.display = true, .screen = std::to_string(kWidth) + 'x' + std::to_string(kHeight) + "x24"});
    const auto sound = rehearsal::PrivateSoundServer::start(folder / "s");
    if (!desktop || !sound) {
        std::fprintf(stderr, "%s\n", (desktop ? sound.error() : desktop.error()).description.c_str());
        return 1;
    }
    auto session = (*sound)->clientEnvironment();
    session["DBUS_SESSION_BUS_ADDRESS"] = (*desktop)->busAddress();
    session["DISPLAY"] = (*desktop)->display();
    session["QT_FORCE_STDERR_LOGGING"] = "1";
    session["QT_LOGGING_RULES"] = "qt.scenegraph.time.renderloop.debug=true";
    Bench bench(folder, std::move(session));
    const auto ours = bench.starts("velto", VELTO_PROGRAM);
    const auto driver = bench.starts("with a driver", VELTO_PROGRAM, {{"QSG_RHI_BACKEND", "opengl"}});
    const auto floor = bench.starts("a window with a text", VELTO_FLOOR);
    if (!ours || !driver || !floor)
        return 1;
    std::printf("ratio of the medians: to the driver %.2f, to the window with a text %.2f\n", *ours / *driver,
                *ours / *floor);
    bench.headless();
    return bench.frames("1") && bench.frames("2") ? 0 : 1;
}

} // namespace
} // namespace velto

int main() {
    return velto::run(velto::test::TemporaryFolder().path());
}
