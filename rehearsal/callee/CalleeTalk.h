// What the person on the line does during one answered call: listen, talk, lose patience, hang up.
#pragma once

#include "rehearsal/process/Reports.h"
#include "rehearsal/scenario/Scenario.h"
#include "rehearsal/signal/ActivityDetector.h"
#include "rehearsal/signal/MarkListener.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace velto::rehearsal {

/// Knows of the agent only what its marks say, in the sound that is fed. No devices, no clock: times are
/// since an epoch of the caller's. One thread.
class CalleeTalk {
  public:
    using Time = std::chrono::nanoseconds;
    struct Hooks {
        /// Say the line with this index; `said` is to be called when its last sound has left.
        std::function<void(std::size_t line)> say;
        std::function<void(const std::string& reason)> hangUp;
        Report report;
    };

    /// The phone has just been answered.
    CalleeTalk(const Scenario& scenario, Hooks hooks, Time now);

    /// 16 kHz mono; `end` is when the last of these samples sounded.
    void hear(std::span<const std::int16_t> samples, Time end);
    void said(Time when);
    /// To be called every 10 ms or so.
    void tick(Time now);

  private:
    void markHeard(const Mark& mark);
    void activityChanged(const ActivityDetector::Change& change, Time end);
    bool mayTalk(const ScenarioLine& line, Time now) const;
    void hangUp(const std::string& reason);
    void report(const char* event, Time at, boost::json::object more = {});

    const Scenario& scenario_;
    Hooks hooks_;
    MarkListener listener_;
    ActivityDetector activity_;
    Time hearing_{};
    std::size_t next_ = 0;           ///< index of the line that is awaited or to be said
    std::optional<Time> beginHeard_; ///< of the agent's line before `next_`
    bool talking_ = false;
    bool hungUp_ = false;
    Time lastSound_; ///< of either side
    Time lastSaid_{};
};

} // namespace velto::rehearsal
