// An asynchronous sequence that keeps only its newest elements: many producers, one consumer.
#pragma once

#include <boost/asio/associated_executor.hpp>
#include <boost/asio/async_result.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace velto {

namespace asio = boost::asio;

/// `push` and `finish`: any thread. `next`: one coroutine at a time. An element pushed while `capacity`
/// elements wait pushes out the oldest waiting one. Elements pushed after `finish` are discarded; those that
/// wait are still delivered, then the sequence ends.
template <class T>
class BoundedSequence {
  public:
    explicit BoundedSequence(std::size_t capacity) : slots_(capacity) {}

    void push(T element) {
        std::function<void()> wake;
        {
            std::lock_guard lock(mutex_);
            if (finished_)
                return;
            if (count_ == slots_.size())
                dropOldest();
            slots_[(first_ + count_) % slots_.size()].emplace(std::move(element));
            ++count_;
            wake = std::exchange(waiter_, nullptr);
        }
        if (wake)
            wake();
    }

    void finish() {
        std::function<void()> wake;
        {
            std::lock_guard lock(mutex_);
            finished_ = true;
            wake = std::exchange(waiter_, nullptr);
        }
        if (wake)
            wake();
    }

    /// The next element; none at the end of the sequence. A cancelled wait also answers none.
    asio::awaitable<std::optional<T>> next() {
        if (auto ready = take())
            co_return std::move(*ready);
        co_await wait();
        auto ready = take();
        if (!ready)
            co_return std::nullopt;
        co_return std::move(*ready);
    }

    std::size_t waiting() const {
        std::lock_guard lock(mutex_);
        return count_;
    }

  private:
    void dropOldest() {
        slots_[first_].reset();
        first_ = (first_ + 1) % slots_.size();
        --count_;
    }

    /// An element, an inner none for "ended", or nothing when the caller has to wait.
    std::optional<std::optional<T>> take() {
        std::lock_guard lock(mutex_);
        if (count_ > 0) {
            std::optional<T> element = std::move(slots_[first_]);
            dropOldest();
            return std::optional<std::optional<T>>(std::in_place, std::move(element));
        }
        if (finished_)
            return std::optional<std::optional<T>>(std::in_place, std::nullopt);
        return std::nullopt;
    }

    asio::awaitable<void> wait() {
        co_await asio::async_initiate<const asio::use_awaitable_t<>, void()>(
            [this](auto handler) {
                auto slot = asio::get_associated_cancellation_slot(handler);
                auto executor = asio::get_associated_executor(handler);
                auto shared = std::make_shared<decltype(handler)>(std::move(handler));
                auto wake = [shared, executor, slot] {
                    asio::post(executor, [shared, slot]() mutable {
                        slot.clear();
                        std::move (*shared)();
                    });
                };
                if (slot.is_connected())
                    slot.assign([this](asio::cancellation_type) {
                        std::function<void()> cancelled;
                        {
                            std::lock_guard lock(mutex_);
                            cancelled = std::exchange(waiter_, nullptr);
                        }
                        if (cancelled)
                            cancelled();
                    });
                bool now = false;
                {
                    std::lock_guard lock(mutex_);
                    now = count_ > 0 || finished_;
                    if (!now)
                        waiter_ = wake;
                }
                if (now)
                    wake();
            },
            asio::use_awaitable);
    }

    mutable std::mutex mutex_;
    std::vector<std::optional<T>> slots_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
    bool finished_ = false;
    std::function<void()> waiter_;
};

} // namespace velto
