// What the programs of a rehearsal report, collected and in order.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"
#include "rehearsal/director/Recording.h"
#include "rehearsal/scenario/Scenario.h"
#include "rehearsal/signal/Mark.h"

#include <boost/json/object.hpp>

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velto::rehearsal {

/// For people.
inline constexpr const char* kApplicationTitle = "the application (velto)";
inline constexpr const char* kPhoneTitle = "the phone app (velto-phone)";

/// A call of the application's history.
struct CallEntry {
    std::string number;
    std::string transcript;
    double duration = 0; ///< s
};

struct DefaultDevices {
    std::string input;
    std::string output;
    bool operator==(const DefaultDevices&) const = default;
};

/// One thread.
class Evidence {
  public:
    using Time = std::chrono::nanoseconds;
    struct HeardMark {
        Mark mark;
        Time at{};
        bool operator==(const HeardMark&) const = default;
    };
    struct KeyCheck {
        VoiceProvider provider{};
        int status = 0; ///< of HTTP
        bool operator==(const KeyCheck&) const = default;
    };
    struct Leg {
        std::uint64_t framesIn = 0;
        std::uint64_t framesOut = 0;
        int peakIn = 0;
        int peakOut = 0;
    };

    void fromServer(const boost::json::object& event);
    void fromCallee(const boost::json::object& event);

    /// Whether the callee's ear has caught the mark at the end (or begin) of a line.
    bool calleeHeard(int mark, Mark::Place place) const;
    /// From the callee's last sound to the agent's first, both at the callee, for each turn.
    std::vector<double> responseSeconds() const;
    /// How long the callee still heard sound after each interruption had been told to the client, s.
    std::vector<double> soundAfterInterruptionSeconds() const;

    std::uint16_t serverPort = 0;
    pid_t phone = 0; ///< process of the phone app; 0 before it has started
    std::vector<std::string> violations;
    std::vector<VoiceProvider> sessions; ///< with which voice protocol, in order
    std::vector<KeyCheck> keyChecks;
    std::vector<int> spoken; ///< marks of the lines that either side began to say, in order
    std::vector<HeardMark> heardByServer;
    std::vector<HeardMark> heardByCallee;
    std::vector<Time> interruptions;
    bool endCallAsked = false;
    bool endCallAnswered = false;
    bool serverClosed = false;
    int closeCode = 0;
    std::optional<std::string> dialled;
    std::optional<std::string> ended; ///< the line's reason
    int timesDialled = 0;
    int timesAnswered = 0;
    int timesEnded = 0;
    Leg server;
    int serverRateIn = 0; ///< Hz
    Leg callee;

    // What the director itself looks up.
    std::optional<CallEntry> record;
    DefaultDevices defaultsBefore;
    DefaultDevices defaultsAfter;
    VoiceProvider expectedProvider{};      ///< who is to hold the call
    std::set<std::string> searchedForKeys; ///< titles of the processes whose command line was looked at
    std::set<std::string> placesWithKey;   ///< where an API key can be read
    /// The longest that the application took to answer while the phone app stood still, s.
    std::optional<double> longestHold;
    std::set<VoiceProvider> storedKeys;
    bool tapWanted = false;  ///< the application was told to capture from the phone app itself
    bool tapUsed = false;    ///< by its own log
    bool isRecorded = false; ///< the application was told to record the call
    std::optional<Recording> recording;
    std::set<int> troubledBefore;       ///< marks of the lines before which their trouble was made
    std::vector<std::string> wrongEnds; ///< a sentence for each program that did not end as asked

  private:
    struct CalleeSound {
        enum class Kind { said, begins, ends } kind;
        Time at{};
    };
    std::vector<CalleeSound> sounds_;
};

} // namespace velto::rehearsal
