#include "VeltoShared/agent/ChunkQueue.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>

namespace velto {

ChunkQueue::ChunkQueue(const asio::any_io_executor& consumer) : slots_(kCapacity), event_(consumer) {
    for (auto& slot : slots_)
        slot.reserve(kMaxFrames);
    const int event = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    boost::system::error_code error;
    if (event >= 0)
        event_.assign(event, error);
    if (event >= 0 && error)
        ::close(event);
}

void ChunkQueue::wake() {
    const std::uint64_t one = 1;
    // Only a counter at its limit refuses, and then the consumer has been woken already.
    [[maybe_unused]] const auto written = ::write(event_.native_handle(), &one, sizeof one);
}

void ChunkQueue::push(std::span<const std::int16_t> samples) {
    samples = samples.first(std::min(samples.size(), kMaxFrames));
    {
        std::lock_guard lock(mutex_);
        if (finished_)
            return;
        if (count_ == kCapacity) {
            first_ = (first_ + 1) % kCapacity;
            --count_;
        }
        slots_[(first_ + count_) % kCapacity].assign(samples.begin(), samples.end());
        ++count_;
    }
    wake();
}

void ChunkQueue::finish() {
    {
        std::lock_guard lock(mutex_);
        finished_ = true;
    }
    wake();
}

asio::awaitable<bool> ChunkQueue::next(std::vector<std::int16_t>& chunk) {
    for (;;) {
        {
            std::lock_guard lock(mutex_);
            if (finished_)
                co_return false;
            if (count_ > 0) {
                const auto& slot = slots_[first_];
                chunk.assign(slot.begin(), slot.end());
                first_ = (first_ + 1) % kCapacity;
                --count_;
                co_return true;
            }
        }
        std::uint64_t wakes = 0;
        boost::system::error_code error;
        co_await event_.async_read_some(asio::buffer(&wakes, sizeof wakes),
                                        asio::redirect_error(asio::use_awaitable, error));
        if (error)
            co_return false;
    }
}

} // namespace velto
