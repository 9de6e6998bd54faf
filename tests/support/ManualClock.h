// A clock that moves only when a test moves it, and an event loop that runs until nothing is left to do.
#pragma once

#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Executors.h"

#include <boost/asio/io_context.hpp>

#include <cstdint>
#include <map>

namespace velto::test {

/// Time starts at 2026-11-16T20:23:20Z. One thread.
class ManualClock : public Clock {
  public:
    /// `drain` runs everything that is ready; called between two instants.
    explicit ManualClock(std::function<void()> drain) : drain_(std::move(drain)) {}

    WallTime now() const override;
    SteadyTime steadyNow() const override { return SteadyTime(elapsed_); }
    asio::awaitable<void> sleep(Duration duration) override;
    /// Moves time on without running anything.
    void blockFor(Duration duration) override { elapsed_ += duration; }
    std::unique_ptr<Timer> repeat(Duration interval, std::function<void()> fire) override;

    /// Moves time on, instant by instant, running whatever becomes due in its order.
    void advance(Duration duration);
    /// Sleeps and timers that wait.
    std::size_t waiting() const { return due_.size(); }

  private:
    class RepeatingTimer;
    using Key = std::pair<Duration, std::uint64_t>;

    Key schedule(Duration delay, std::function<void()> fire);

    std::function<void()> drain_;
    Duration elapsed_{};
    std::uint64_t nextSequence_ = 0;
    std::map<Key, std::function<void()>> due_;
};

/// Installs one single-threaded loop as `MainThread` and `Background`, and a hand-driven clock.
class Loop {
  public:
    Loop();
    ~Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    /// Runs all that is ready, without moving time.
    void drain();
    void advance(Clock::Duration duration) {
        drain();
        clock.advance(duration);
    }
    /// Runs a coroutine to its end, moving time on as far as it needs, and answers what it answers.
    template <class T>
    T run(asio::awaitable<T> task) {
        std::optional<T> answer;
        std::exception_ptr error;
        asio::co_spawn(context, std::move(task), [&](std::exception_ptr e, T value) {
            error = e;
            answer.emplace(std::move(value));
        });
        finish([&] { return answer.has_value(); });
        if (error)
            std::rethrow_exception(error);
        return std::move(*answer);
    }
    void run(asio::awaitable<void> task);

    asio::io_context context{1};
    ManualClock clock;

  private:
    void finish(const std::function<bool()>& done);
};

} // namespace velto::test
