// What an application that was killed in mid-call left behind, and what its next start made of that.
#pragma once

#include "rehearsal/director/Evidence.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace velto::rehearsal {

struct Aftermath {
    /// What the agent had heard in time for the file.
    std::vector<Mark> heardBefore;
    std::optional<Recording> recording; ///< as the killed application left it
    double recordedFor = 0;             ///< from the file's appearance to the kill, s
    DefaultDevices defaultsAtKill;
    DefaultDevices defaultsAfterStart;
    bool wasMuted = false; ///< the phone app, while it was tapped
    std::string log;       ///< of the next start
};

/// The first line of the call, with which the phone was answered, may be missing in the recording.
std::vector<std::string> aftermathFaults(const Scenario& scenario, const Evidence& evidence,
                                         const Aftermath& aftermath);
void printAftermath(std::ostream& out, const Aftermath& aftermath);

} // namespace velto::rehearsal
