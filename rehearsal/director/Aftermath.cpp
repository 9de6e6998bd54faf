// What an application that was killed in mid-call left behind.
#include "rehearsal/director/Aftermath.h"

#include "rehearsal/director/Verdict.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace velto::rehearsal {
namespace {

/// What of a recording may be missing when its application is killed, s.
constexpr double kMostLost = 1.0;

} // namespace

std::vector<std::string> aftermathFaults(const Scenario& scenario, const Evidence& evidence,
                                         const Aftermath& aftermath) {
    std::vector<std::string> found;
    const auto says = [&](const char* line) { return aftermath.log.find(line) != std::string::npos; };
    if (evidence.isRecorded && !aftermath.recording) {
        found.emplace_back("the killed application left no recording that can be read");
    } else if (evidence.isRecorded) {
        if (aftermath.recording->seconds < aftermath.recordedFor - kMostLost)
            found.push_back("of " + std::to_string(aftermath.recordedFor) + " s before the kill, only " +
                            std::to_string(aftermath.recording->seconds) + " s are in the recording");
        checkRecordedMarks(scenario, aftermath.heardBefore, aftermath.recording->heard, found);
    }
    if (aftermath.defaultsAtKill == evidence.defaultsBefore)
        found.emplace_back("no default device was switched when the application was killed");
    if (aftermath.defaultsAfterStart != evidence.defaultsBefore)
        found.push_back("after the next start the default devices are " + aftermath.defaultsAfterStart.input +
                        " and " + aftermath.defaultsAfterStart.output);
    if (!says("bridge: restored your default devices left from a previous session"))
        found.emplace_back("the next start does not say that it restored the default devices");
    if (aftermath.wasMuted && !says("tap: gave back the sound of an app that a previous session had muted"))
        found.emplace_back("the next start does not say that it gave back the phone app's sound");
    return found;
}

void printAftermath(std::ostream& out, const Aftermath& aftermath) {
    out << std::fixed << std::setprecision(2) << "\nKilled in mid-call\n";
    if (aftermath.recording)
        out << "  recording: " << aftermath.recordedFor << " s before the kill, "
            << aftermath.recording->seconds << " s in the file, " << aftermath.recording->heard.size()
            << " marks heard in it\n";
    out << "  default devices: " << aftermath.defaultsAtKill.input << " and "
        << aftermath.defaultsAtKill.output << " at the kill; " << aftermath.defaultsAfterStart.input
        << " and " << aftermath.defaultsAfterStart.output << " after the next start\n  next start:\n";
    std::istringstream lines(aftermath.log);
    for (std::string line; std::getline(lines, line);)
        out << "    " << line << '\n';
}

} // namespace velto::rehearsal
