#include "tests/views/endtoend/Watchdog.h"

#include "rehearsal/process/ProcessTree.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kLook = 5ms;
/// Together with the first look, what a block may last longer than this sees of it.
constexpr auto kBetweenQuestions = 10ms;
constexpr double kNanosecond = 1e-9;

std::filesystem::path processFolder(pid_t pid) {
    return "/proc/" + std::to_string(pid);
}

/// Seconds on a core, and seconds in which it could have run and had none.
std::pair<double, double> scheduled(const std::filesystem::path& thread) {
    std::ifstream file(thread / "schedstat");
    double ran = 0;
    double queued = 0;
    file >> ran >> queued;
    return {ran * kNanosecond, queued * kNanosecond};
}

double queuedIn(pid_t pid) {
    double all = 0;
    std::error_code error;
    for (std::filesystem::directory_iterator thread(processFolder(pid) / "task", error), end;
         !error && thread != end; thread.increment(error))
        all += scheduled(thread->path()).second;
    return all;
}

char stateOf(pid_t pid) {
    std::ifstream file(processFolder(pid) / "stat");
    std::string text;
    std::getline(file, text);
    const auto name = text.rfind(')');
    return name == std::string::npos || name + 2 >= text.size() ? '?' : text[name + 2];
}

} // namespace

Watchdog::Watchdog(pid_t application)
    : application_(application), start_(scheduled(processFolder(application)).first),
      thread_([this] { watch(); }) {}

Watchdog::~Watchdog() {
    over_ = true;
    thread_.join();
}

void Watchdog::step(const std::string& name, double longestWait) {
    const std::scoped_lock lock(mutex_);
    now_ = name;
    if (steps_.try_emplace(name).second)
        order_.push_back(name);
    steps_[name].limit = longestWait;
}

Watchdog::Times Watchdog::times() const {
    Times now;
    now.ran = scheduled(processFolder(application_)).first;
    for (const auto pid : rehearsal::descendantsOf(::getpid()))
        now.queued += queuedIn(pid);
    now.queued += queuedIn(::getpid());
    now.state = stateOf(application_);
    return now;
}

void Watchdog::watch() {
    while (!over_) {
        std::this_thread::sleep_for(kBetweenQuestions);
        auto answer = inquiry_.ask({{"cmd", "ping"}});
        if (answer.wait_for(kLook) == std::future_status::ready)
            continue;
        Block block;
        auto before = times();
        auto looked = Clock::now();
        while (!over_ && answer.wait_for(kLook) != std::future_status::ready) {
            const auto after = times();
            const auto now = Clock::now();
            const std::chrono::duration<double> gone = now - looked;
            const double worked = after.ran - before.ran;
            block.worked += worked;
            if (after.state == 'S')
                block.waited += std::max(0.0, gone.count() - worked - (after.queued - before.queued));
            before = after;
            looked = now;
        }
        {
            const std::scoped_lock lock(mutex_);
            auto& longest = steps_[now_];
            longest.waited = std::max(longest.waited, block.waited);
            longest.worked = std::max(longest.worked, block.worked);
        }
    }
}

std::string Watchdog::table() {
    const std::scoped_lock lock(mutex_);
    std::ostringstream text;
    text.precision(0);
    text << std::fixed << "longest block of the main thread, ms (its start: " << start_ * 1e3
         << " of work)\n  waited worked\n";
    for (const auto& name : order_) {
        const auto& block = steps_[name];
        text.width(8);
        text << block.waited * 1e3;
        text.width(7);
        text << block.worked * 1e3 << "  " << name << "\n";
    }
    return text.str();
}

std::vector<std::string> Watchdog::faults() {
    const std::scoped_lock lock(mutex_);
    std::vector<std::string> found;
    for (const auto& [name, block] : steps_) {
        const auto tell = [&](const char* what, double seconds) {
            found.push_back(name + ": the main thread " + what + " for " +
                            std::to_string(static_cast<int>(seconds * 1e3)) + " ms");
        };
        if (block.waited > block.limit)
            tell("waited for somebody", block.waited);
        if (block.worked > std::max(start_, kLongestWait))
            tell("worked without a look at the user", block.worked);
    }
    return found;
}

} // namespace velto::test
