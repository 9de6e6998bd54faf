#include "tests/support/ManualClock.h"

#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>

namespace velto::test {
namespace {

constexpr Clock::WallTime kStart{std::chrono::seconds(1794860600)};

} // namespace

Clock::WallTime ManualClock::now() const {
    return kStart + std::chrono::duration_cast<WallTime::duration>(elapsed_);
}

ManualClock::Key ManualClock::schedule(Duration delay, std::function<void()> fire) {
    const Key key{elapsed_ + std::max(delay, Duration::zero()), nextSequence_++};
    due_.emplace(key, std::move(fire));
    return key;
}

asio::awaitable<void> ManualClock::sleep(Duration duration) {
    const auto timer = std::make_shared<asio::steady_timer>(co_await asio::this_coro::executor,
                                                            asio::steady_timer::time_point::max());
    const auto key = schedule(duration, [weak = std::weak_ptr(timer)] {
        if (const auto sleeper = weak.lock())
            sleeper->cancel();
    });
    boost::system::error_code ignored;
    co_await timer->async_wait(asio::redirect_error(asio::use_awaitable, ignored));
    due_.erase(key);
}

class ManualClock::RepeatingTimer : public Timer {
  public:
    RepeatingTimer(ManualClock& clock, Duration interval, std::function<void()> fire)
        : clock_(clock), interval_(interval),
          fire_(std::make_shared<std::function<void()>>(std::move(fire))) {
        arm();
    }
    ~RepeatingTimer() override { clock_.due_.erase(key_); }

  private:
    void arm() {
        key_ = clock_.schedule(interval_, [this] {
            arm();
            MainThread::post([timers = std::weak_ptr(fire_)] {
                if (const auto fire = timers.lock()) // it may destroy this timer
                    (*fire)();
            });
        });
    }

    ManualClock& clock_;
    Duration interval_;
    std::shared_ptr<std::function<void()>> fire_;
    Key key_{};
};

std::unique_ptr<Timer> ManualClock::repeat(Duration interval, std::function<void()> fire) {
    return std::make_unique<RepeatingTimer>(*this, interval, std::move(fire));
}

void ManualClock::advance(Duration duration) {
    const auto end = elapsed_ + duration;
    drain_();
    while (!due_.empty() && due_.begin()->first.first <= end) {
        auto node = due_.extract(due_.begin());
        elapsed_ = std::max(elapsed_, node.key().first);
        node.mapped()();
        drain_();
    }
    elapsed_ = std::max(elapsed_, end);
}

Loop::Loop() : clock([this] { drain(); }) {
    MainThread::install(context.get_executor());
    Background::install(context.get_executor());
    Blocking::install(context.get_executor());
    Clock::install(&clock);
}

Loop::~Loop() {
    drain();
    Clock::install(nullptr);
    MainThread::install({});
    Background::install({});
    Blocking::install({});
}

void Loop::drain() {
    context.restart();
    while (context.poll() > 0)
        context.restart();
}

void Loop::run(asio::awaitable<void> task) {
    run([](asio::awaitable<void> inner) -> asio::awaitable<bool> {
        co_await std::move(inner);
        co_return true;
    }(std::move(task)));
}

void Loop::finish(const std::function<bool()>& done) {
    drain();
    // Far beyond any wait of the system; a coroutine that still sleeps then never ends.
    for (int step = 0; step < 100'000 && !done(); ++step)
        clock.advance(std::chrono::milliseconds(10));
    if (!done())
        throw std::runtime_error("the coroutine did not end");
}

} // namespace velto::test
