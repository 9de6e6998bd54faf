// The phone's ear and mouth: the system's default input and default output.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <chrono>
#include <functional>
#include <memory>

namespace velto::rehearsal {

/// Streams exist from construction to destruction only. The callbacks come on a thread of its own.
class PhoneAudio {
  public:
    using Time = std::chrono::nanoseconds;
    static constexpr std::uint32_t earRate = 16000;   ///< Hz
    static constexpr std::uint32_t mouthRate = 24000; ///< Hz

    struct Callbacks {
        /// What the default input brought; its last sample sounded at `end`.
        std::function<void(Samples samples, Time end)> heard;
        /// The last sample that was queued leaves the default output at this time.
        std::function<void(Time when)> said;
    };
    struct Measures {
        std::uint64_t framesHeard = 0;
        int peakHeard = 0;
        std::uint64_t framesSaid = 0; ///< without the silence between lines
        int peakSaid = 0;
    };

    explicit PhoneAudio(Callbacks callbacks);
    ~PhoneAudio();
    PhoneAudio(const PhoneAudio&) = delete;
    PhoneAudio& operator=(const PhoneAudio&) = delete;

    /// Queues samples at the mouth's rate. Any thread.
    void say(Samples samples);
    /// Any thread.
    Measures measures() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace velto::rehearsal
