// Time: nobody reads a clock or sleeps except through here, so that tests drive it by hand.
#pragma once

#include <boost/asio/awaitable.hpp>

#include <chrono>
#include <functional>
#include <memory>

namespace velto {

namespace asio = boost::asio;

/// Stops a repeating or one-shot timer when destroyed. Main thread only.
class Timer {
  public:
    virtual ~Timer() = default;
};

/// Wall time, monotonic time, suspension and timers. `now`, `steadyNow`, `blockFor` and `sleep`: any thread.
class Clock {
  public:
    using WallTime = std::chrono::system_clock::time_point;
    using SteadyTime = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::nanoseconds;

    virtual ~Clock() = default;

    virtual WallTime now() const = 0;
    virtual SteadyTime steadyNow() const = 0;

    /// Suspends the awaiting coroutine and resumes it on its own executor. A cancelled sleep returns early,
    /// like a finished one, and leaves the coroutine free to look at its cancellation state.
    virtual asio::awaitable<void> sleep(Duration duration) = 0;

    /// Blocks the calling thread.
    virtual void blockFor(Duration duration) = 0;

    /// Runs `fire` on the main thread every `interval`, first after one interval, until the timer dies.
    virtual std::unique_ptr<Timer> repeat(Duration interval, std::function<void()> fire) = 0;

    /// The process's clock: the real one unless a test has installed its own.
    static Clock& shared();
    /// `clock` must outlive its use; none puts the real clock back.
    static void install(Clock* clock);
};

} // namespace velto
