// Sound that arrives unevenly and is taken evenly.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

namespace velto {

/// Interleaved samples. They wait for 30 ms before they are taken, again after each gap. A source that was
/// held up brings what it missed later, on top of that: what stays in the buffer for a second beyond 30 ms is
/// thrown away, in a quiet place if there is one within another second; and what is beyond 100 ms at once.
/// Allocates in its constructor alone. One thread at a time; times are of any steady clock.
class JitterBuffer {
  public:
    using Time = std::chrono::microseconds;

    /// `rate` in Hz.
    JitterBuffer(std::uint32_t rate, std::uint32_t channels);

    void push(std::span<const std::int16_t> samples, Time now);
    /// Takes samples from the front and adds them to `sum`; adds nothing where there are none.
    void addTo(std::span<std::int32_t> sum, Time now);

    std::chrono::milliseconds kept() const;

  private:
    std::size_t samplesIn(std::chrono::milliseconds time) const;
    std::int16_t at(std::size_t sample) const { return ring_[(first_ + sample) % ring_.size()]; }
    void drop(std::size_t samples);
    void catchUp(std::size_t taken);
    bool isQuiet(std::size_t samples) const;

    std::uint32_t rate_;
    std::uint32_t channels_;
    std::vector<std::int16_t> ring_;
    std::size_t first_ = 0;
    std::size_t kept_ = 0;
    bool waiting_ = true; ///< until the first of what is kept is old enough
    Time waitingSince_{};
    std::size_t least_ = 0;  ///< kept, since `taken_` was 0
    std::size_t taken_ = 0;  ///< in this second
    std::size_t excess_ = 0; ///< to be thrown away
};

} // namespace velto
