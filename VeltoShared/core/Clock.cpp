#include "VeltoShared/core/Clock.h"

#include "VeltoShared/core/Executors.h"

#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <thread>

namespace velto {
namespace {

class RealTimer : public Timer, public std::enable_shared_from_this<RealTimer> {
  public:
    RealTimer(Clock::Duration interval, std::function<void()> fire)
        : timer_(MainThread::executor()), interval_(interval), fire_(std::move(fire)) {}

    void arm() {
        timer_.expires_after(interval_);
        timer_.async_wait([weak = weak_from_this()](const boost::system::error_code& error) {
            auto self = weak.lock();
            if (error || !self)
                return;
            self->arm();
            self->fire_();
        });
    }

  private:
    asio::steady_timer timer_;
    Clock::Duration interval_;
    std::function<void()> fire_;
};

/// The caller's end of a RealTimer: the timer's callback may run while its owner lets it go.
class TimerHandle : public Timer {
  public:
    explicit TimerHandle(std::shared_ptr<RealTimer> timer) : timer_(std::move(timer)) {}

  private:
    std::shared_ptr<RealTimer> timer_;
};

class RealClock : public Clock {
  public:
    WallTime now() const override { return std::chrono::system_clock::now(); }
    SteadyTime steadyNow() const override { return std::chrono::steady_clock::now(); }
    void blockFor(Duration duration) override { std::this_thread::sleep_for(duration); }

    asio::awaitable<void> sleep(Duration duration) override {
        asio::steady_timer timer(co_await asio::this_coro::executor, duration);
        boost::system::error_code ignored;
        co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
    }

    std::unique_ptr<Timer> repeat(Duration interval, std::function<void()> fire) override {
        auto timer = std::make_shared<RealTimer>(interval, std::move(fire));
        timer->arm();
        return std::make_unique<TimerHandle>(std::move(timer));
    }
};

Clock*& installed() {
    static Clock* clock = nullptr;
    return clock;
}

} // namespace

Clock& Clock::shared() {
    static RealClock real;
    return installed() ? *installed() : real;
}

void Clock::install(Clock* clock) {
    installed() = clock;
}

} // namespace velto
