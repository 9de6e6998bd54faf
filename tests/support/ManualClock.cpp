#include "tests/support/ManualClock.h"

#include <boost/asio/associated_cancellation_slot.hpp>
#include <boost/asio/associated_executor.hpp>
#include <boost/asio/async_result.hpp>

#include <gtest/gtest.h>

namespace velto::test {
namespace {

constexpr Clock::WallTime kStart{std::chrono::seconds(1794860600)};

} // namespace

ManualClock::ManualClock(std::function<void()> drain) : drain_(std::move(drain)) {}

Clock::WallTime ManualClock::now() const {
    return kStart + std::chrono::duration_cast<WallTime::duration>(elapsed_);
}

Clock::SteadyTime ManualClock::steadyNow() const {
    return SteadyTime(elapsed_);
}

void ManualClock::blockFor(Duration duration) {
    elapsed_ += duration;
}

ManualClock::Key ManualClock::schedule(Duration delay, std::function<void()> fire) {
    const Key key{elapsed_ + std::max(delay, Duration::zero()), nextSequence_++};
    due_.emplace(key, std::move(fire));
    return key;
}

asio::awaitable<void> ManualClock::sleep(Duration duration) {
    co_await asio::async_initiate<const asio::use_awaitable_t<>, void()>(
        [this, duration](auto handler) {
            auto slot = asio::get_associated_cancellation_slot(handler);
            auto executor = asio::get_associated_executor(handler);
            auto shared = std::make_shared<decltype(handler)>(std::move(handler));
            auto wake = [shared, executor, slot] {
                asio::post(executor, [shared, slot]() mutable {
                    slot.clear();
                    std::move (*shared)();
                });
            };
            const auto key = schedule(duration, wake);
            if (slot.is_connected())
                slot.assign([this, key, wake](asio::cancellation_type) {
                    if (due_.erase(key) > 0)
                        wake();
                });
        },
        asio::use_awaitable);
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
            const auto fire = fire_; // the callback may destroy this timer
            MainThread::post([fire, alive = std::weak_ptr(alive_)] {
                if (!alive.expired())
                    (*fire)();
            });
        });
    }

    ManualClock& clock_;
    Duration interval_;
    std::shared_ptr<std::function<void()>> fire_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();
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
    bool done = false;
    std::exception_ptr error;
    asio::co_spawn(context, std::move(task), [&](std::exception_ptr e) {
        error = e;
        done = true;
    });
    finish([&] { return done; });
    if (error)
        std::rethrow_exception(error);
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
