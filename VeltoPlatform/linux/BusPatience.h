// How long a thread may still wait for programs that do not answer.
#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <thread>

namespace velto {

/// Several programs of a desktop can hang at once, and one look at the screen asks several of them. A thread
/// waits 0.3 s for the first that is silent and less for the next ones (0.1 s, then 0.05 s each), so that the
/// three that one look can come across take less than 0.5 s of it in all. What was waited in vain is made
/// good in the same time: after half a second it has its full patience again. Any thread.
class BusPatience {
  public:
    using Duration = std::chrono::microseconds;

    /// For the calling thread's next wait.
    Duration left();
    /// The calling thread has waited in vain.
    void spend(Duration waited);

  private:
    using Clock = std::chrono::steady_clock;
    struct Account {
        Duration spent; ///< at the time of `last`
        Clock::time_point last;
    };

    /// In vain, and not made good yet by this time.
    Duration spent(std::thread::id id, Clock::time_point now);

    std::mutex mutex_;
    std::map<std::thread::id, Account> accounts_;
};

} // namespace velto
