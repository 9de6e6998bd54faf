#include "tests/views/endtoend/Watchdog.h"

#include "rehearsal/process/ProcessTree.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace velto::test {
namespace {

using namespace std::chrono_literals;

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
    std::string name;
    char state = '?';
    file >> pid >> name >> state;
    return state;
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
    step_ = name;
    limit_ = longestWait;
}

std::vector<std::string> Watchdog::faults() {
    const std::scoped_lock lock(mutex_);
    return faults_;
}

Watchdog::Times Watchdog::times() const {
    Times now{.at = std::chrono::steady_clock::now(),
              .ran = scheduled(processFolder(application_)).first,
              .queued = queuedIn(::getpid()),
              .state = stateOf(application_)};
    for (const auto pid : rehearsal::descendantsOf(::getpid()))
        now.queued += queuedIn(pid);
    return now;
}

void Watchdog::watch() {
    while (!over_) {
        std::this_thread::sleep_for(kBetweenQuestions);
        auto answer = inquiry_.ask({{"cmd", "ping"}});
        if (answer.wait_for(kLook) == std::future_status::ready)
            continue;
        double waited = 0;
        double worked = 0;
        auto before = times();
        while (!over_ && answer.wait_for(kLook) != std::future_status::ready) {
            const auto after = times();
            const std::chrono::duration<double> gone = after.at - before.at;
            const double ran = after.ran - before.ran;
            worked += ran;
            if (after.state == 'S')
                waited += std::max(0.0, gone.count() - ran - (after.queued - before.queued));
            before = after;
        }
        const std::scoped_lock lock(mutex_);
        const auto tell = [this](const char* what, double seconds) {
            faults_.push_back(step_ + ": the main thread " + what + " for " + std::to_string(seconds) + " s");
        };
        if (waited > limit_)
            tell("waited for somebody", waited);
        if (worked > std::max(start_, kLongestWait))
            tell("worked without a look at the user", worked);
    }
}

} // namespace velto::test
