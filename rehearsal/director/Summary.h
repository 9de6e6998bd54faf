// The end of a rehearsal in words and in figures.
#pragma once

#include "rehearsal/director/Evidence.h"
#include "rehearsal/director/ProcessUsage.h"

#include <boost/json/object.hpp>

#include <iosfwd>
#include <string>
#include <vector>

namespace velto::rehearsal {

struct Measurements {
    std::string applicationStats; ///< the application's own last line of statistics; empty without one
    double cpuPercent = 0;        ///< of one core, from dialling to the end of the call
    double residentMB = 0;        ///< the most that was seen
    double callSeconds = 0;
};

/// The text after the last "stats: " of the application's log; empty without one.
std::string lastStats(const std::string& log);

/// The last dozen of the lines of the application's log, without those that every call has plenty of.
std::string newestLines(const std::string& log);

void printSummary(std::ostream& out, const Evidence& evidence, const Measurements& measurements);
/// What can be said of a call without faults.
std::string goodEnd(const Scenario& scenario);
void printVerdict(std::ostream& out, const std::string& good, const std::vector<std::string>& faults);
boost::json::object summaryObject(const Scenario& scenario, const Evidence& evidence,
                                  const Measurements& measurements, const std::vector<std::string>& faults);

} // namespace velto::rehearsal
