// The model of a rehearsal: it listens to the sound that arrives and says its lines of the scenario.
#pragma once

#include "rehearsal/process/Reports.h"
#include "rehearsal/scenario/Scenario.h"
#include "rehearsal/server/ServerProtocol.h"
#include "rehearsal/signal/ActivityDetector.h"
#include "rehearsal/signal/LineVoice.h"
#include "rehearsal/signal/MarkListener.h"

#include <boost/json/object.hpp>

#include <chrono>
#include <deque>
#include <map>
#include <string>

namespace velto::rehearsal {

/// What one session does from its setup to its end, without sockets and without a clock of its own. What the
/// callee says becomes a transcription when the mark at the end of the line has been decoded, and not
/// otherwise. Audio is sent five times as fast as it plays; transcriptions of it go out as it plays, so that
/// a line that was cut is transcribed as far as it was heard. Times are since an epoch of the caller's.
/// One thread.
class Conversation {
  public:
    using Time = std::chrono::nanoseconds;
    /// Sound of the agent's lines by mark, at 24 kHz.
    using Voices = std::map<int, SpokenLine>;

    /// Reports have the time "at", ns.
    Conversation(const Scenario& scenario, const Voices& voices, ServerProtocol& protocol, Report report);

    /// The session's configuration has been accepted.
    void start(Time now);
    /// A text turn asks the model to speak.
    void greet(Time now);
    void hear(std::span<const std::int16_t> samples, Time now);
    /// The call of `end_call` has been answered.
    void toolAnswered();
    /// To be called every 10 ms or so.
    void tick(Time now);
    /// What has arrived and left so far.
    boost::json::object measures() const;

  private:
    struct Speaking {
        std::size_t line = 0;
        const SpokenLine* spoken = nullptr;
        Time began{};
        std::size_t framesSent = 0;
        std::deque<std::pair<Time, std::string>> fragments; ///< by the time from the begin at which they play
    };

    ServerProtocol::Position position(std::uint64_t frames) const;
    void markHeard(const Mark& mark, Time now);
    void activityChanged(const ActivityDetector::Change& change, Time now);
    void interrupt(Time now);
    void speak(std::size_t line, Time now);
    void continueSpeaking(Time now);
    void endSpeaking(Time now);
    bool mayGreetWithoutHearing(Time now) const;
    void report(const char* event, Time now, boost::json::object more = {});

    const Scenario& scenario_;
    const Voices& voices_;
    ServerProtocol& protocol_;
    Report report_;
    MarkListener listener_;
    ActivityDetector activity_;
    Time hearing_{}; ///< time of the samples that are being listened to
    std::optional<Time> greetAsked_;
    std::size_t next_ = 0; ///< index of the line that is awaited or to be said
    std::optional<Speaking> speaking_;
    std::uint64_t framesIn_ = 0;
    std::uint64_t framesOut_ = 0;
    int peakIn_ = 0;
    bool toolAnswered_ = false;
};

} // namespace velto::rehearsal
