// Samples on their way from a real-time thread to one that may wait.
#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace velto {

/// One thread pushes and one pops, each at any time; neither waits nor allocates.
class SampleRing {
  public:
    /// `capacity` in samples, rounded up to a power of two.
    explicit SampleRing(std::size_t capacity)
        : mask_(std::bit_ceil(capacity) - 1),
          samples_(std::make_unique_for_overwrite<std::int16_t[]>(mask_ + 1)) {}

    /// How many were taken, from the front: as many as there is room for.
    std::size_t push(std::span<const std::int16_t> samples) {
        const std::size_t end = pushed_.load(std::memory_order_relaxed);
        const std::size_t room = mask_ + 1 - (end - popped_.load(std::memory_order_acquire));
        const std::size_t count = std::min(room, samples.size());
        const std::size_t first = std::min(count, mask_ + 1 - (end & mask_));
        std::copy_n(samples.data(), first, &samples_[end & mask_]);
        std::copy_n(samples.data() + first, count - first, &samples_[0]);
        pushed_.store(end + count, std::memory_order_release);
        return count;
    }

    /// Hands what is there to `use`, as one or two spans that are valid during the call.
    template <class Use>
    void popAll(Use use) {
        const std::size_t begin = popped_.load(std::memory_order_relaxed);
        const std::size_t end = pushed_.load(std::memory_order_acquire);
        const std::size_t first = std::min(end - begin, mask_ + 1 - (begin & mask_));
        if (first > 0)
            use(std::span<const std::int16_t>(&samples_[begin & mask_], first));
        if (first < end - begin)
            use(std::span<const std::int16_t>(&samples_[0], end - begin - first));
        popped_.store(end, std::memory_order_release);
    }

  private:
    const std::size_t mask_;
    const std::unique_ptr<std::int16_t[]> samples_;
    std::atomic<std::size_t> pushed_ = 0;
    std::atomic<std::size_t> popped_ = 0;
};

} // namespace velto
