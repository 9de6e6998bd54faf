// Watches, from outside, whether the application's main thread answers.
#pragma once

#include "rehearsal/director/Inquiry.h"

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace velto::test {

/// Asks "ping", which the main thread answers, again and again on a thread of its own. While an answer is
/// outstanding, it looks every few milliseconds at what the main thread has done with the time:
///
/// - Worked: it ran on a core. How long that takes is the machine's and the build's affair: a pane is built
///   more slowly with a sanitizer. Limited by what starting the windows took in the same run.
/// - Waited for a core, or for somebody in the session who waited for one (an answer of the phone app's comes
///   late on a busy machine), this watchdog included: counted for nobody. So is the disk.
/// - Waited for somebody else in a system call. This is what freezes windows, and it does not get longer on a
///   slow machine. Limited to 100 ms, unless a step says why it may be more.
class Watchdog {
  public:
    /// The application must answer already. Ends with the object, which must live shorter than the process.
    explicit Watchdog(pid_t application);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    static constexpr double kLongestWait = 0.1; ///< s
    /// What happens from here on belongs to this step.
    void step(const std::string& name, double longestWait = kLongestWait);
    /// A sentence for each time that it was held up for too long.
    std::vector<std::string> faults();

  private:
    struct Times {
        std::chrono::steady_clock::time_point at;
        double ran = 0;    ///< the main thread, s
        double queued = 0; ///< all threads of the session, s
        char state = 0;    ///< of the main thread, as in /proc/PID/stat
    };

    void watch();
    Times times() const;

    const pid_t application_;
    double start_ = 0; ///< what the main thread had worked before this began, s
    rehearsal::Inquiry inquiry_;
    std::mutex mutex_; ///< of what follows
    std::string step_ = "start";
    double limit_ = kLongestWait;
    std::vector<std::string> faults_;
    std::atomic<bool> over_{false};
    std::thread thread_;
};

} // namespace velto::test
