// Whether a rehearsal went as its scenario says.
#pragma once

#include "rehearsal/director/Evidence.h"

#include <string>
#include <vector>

namespace velto::rehearsal {

/// One plain sentence for each thing that is not as it should be, the most telling first; empty when all is.
/// A line counts as heard only by its mark at the other end.
std::vector<std::string> faults(const Scenario& scenario, const Evidence& evidence);

/// What the agent heard must be in the recording. It begins when the callee has answered, so that the line
/// with which the phone was answered may be missing or cut.
void checkRecordedMarks(const Scenario& scenario, const std::vector<Mark>& heardByAgent,
                        const std::vector<Mark>& recorded, std::vector<std::string>& found);

/// The application may keep others waiting this long while the phone app stands still, s.
inline constexpr double kLongestHold = 0.5;

/// The call's line must be silent this soon after the client was told of an interruption, s.
inline constexpr double kLongestSoundAfterInterruption = 0.5;

} // namespace velto::rehearsal
