// Counters of one agent's audio, both directions.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <span>

namespace velto {

/// Any thread. Counters only grow.
class AgentStats {
  public:
    struct Reading {
        std::int64_t dlFrames = 0;  ///< downlink samples received
        std::int64_t dlPeak = 0;    ///< largest absolute downlink sample
        std::int64_t ulSamples = 0; ///< uplink samples received from the model
        std::int64_t ulPeak = 0;
    };

    void addDownlink(std::span<const std::int16_t> samples) {
        add(samples, &Reading::dlFrames, &Reading::dlPeak);
    }
    void addUplink(std::span<const std::int16_t> samples) {
        add(samples, &Reading::ulSamples, &Reading::ulPeak);
    }

    Reading read() const {
        std::lock_guard lock(mutex_);
        return counters_;
    }

  private:
    void add(std::span<const std::int16_t> samples, std::int64_t Reading::*count,
             std::int64_t Reading::*peak) {
        std::int32_t largest = 0;
        for (const std::int32_t sample : samples)
            largest = std::max(largest, std::abs(sample));
        std::lock_guard lock(mutex_);
        counters_.*count += static_cast<std::int64_t>(samples.size());
        counters_.*peak = std::max<std::int64_t>(counters_.*peak, largest);
    }

    mutable std::mutex mutex_;
    Reading counters_;
};

} // namespace velto
