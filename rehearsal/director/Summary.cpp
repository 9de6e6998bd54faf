// The end of a rehearsal in words and in figures.
#include "rehearsal/director/Summary.h"

#include <boost/json.hpp>

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const auto middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::string seconds(double value) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << value << " s";
    return text.str();
}

void printTimes(std::ostream& out, const char* title, const std::vector<double>& times) {
    if (times.empty())
        return;
    out << "  " << title;
    for (const auto time : times)
        out << seconds(time) << ", ";
    out << "median " << seconds(median(times)) << '\n';
}

json::object leg(const Evidence::Leg& leg) {
    return {{"framesIn", leg.framesIn},
            {"framesOut", leg.framesOut},
            {"peakIn", leg.peakIn},
            {"peakOut", leg.peakOut}};
}

} // namespace

std::string lastStats(const std::string& log) {
    constexpr std::string_view key = "stats: ";
    const auto at = log.rfind(key);
    if (at == std::string::npos)
        return {};
    const auto begin = at + key.size();
    return log.substr(begin, log.find('\n', begin) - begin);
}

void printSummary(std::ostream& out, const Evidence& evidence, const Measurements& measurements) {
    out << "\nRecord\n";
    if (evidence.record) {
        out << "  " << evidence.record->number << ", " << seconds(evidence.record->duration) << '\n';
        std::istringstream lines(evidence.record->transcript);
        for (std::string line; std::getline(lines, line);)
            out << "  " << line << '\n';
    } else {
        out << "  none\n";
    }
    out << "\nWhat every leg measured\n"
        << "  callee     said " << evidence.callee.framesOut << " frames at 24 kHz, peak "
        << evidence.callee.peakOut << "; heard " << evidence.callee.framesIn << " frames at 16 kHz, peak "
        << evidence.callee.peakIn << '\n'
        << "  server     received " << evidence.server.framesIn << " frames at 16 kHz, peak "
        << evidence.server.peakIn << "; sent " << evidence.server.framesOut << " frames at 24 kHz\n"
        << "  agent      "
        << (measurements.applicationStats.empty() ? "no statistics" : measurements.applicationStats) << '\n';
    printTimes(out, "callee's last sound to the agent's first, at the callee: ", evidence.responseSeconds());
    if (!evidence.responseSeconds().empty())
        out << "    (0.50 s of it is the silence by which the server knows the end of a turn)\n";
    printTimes(out, "sound after an interruption, at the callee: ", evidence.soundAfterInterruptionSeconds());
    if (evidence.longestHold)
        out << "  longest answer of the application while the phone app stood still: "
            << seconds(*evidence.longestHold) << '\n';
    out << "  application " << std::fixed << std::setprecision(1) << measurements.cpuPercent
        << " % of one core over " << measurements.callSeconds << " s of call, " << measurements.residentMB
        << " MB resident\n";
}

void printVerdict(std::ostream& out, const Scenario& scenario, const std::vector<std::string>& faults) {
    out << '\n';
    if (faults.empty() && scenario.end == CallEnd::noAnswer)
        out << "Good: nobody answered, the call ended, and what the agent said was heard by nobody.\n";
    else if (faults.empty())
        out << "Good: every line was decoded from sound at the other end.\n";
    else
        out << "Failed: " << faults.front() << '\n';
    for (std::size_t i = 1; i < faults.size(); ++i)
        out << "        " << faults[i] << '\n';
    out.flush();
}

json::object summaryObject(const Scenario& scenario, const Evidence& evidence,
                           const Measurements& measurements, const std::vector<std::string>& faults) {
    json::object record;
    if (evidence.record)
        record = {{"number", evidence.record->number},
                  {"duration", evidence.record->duration},
                  {"transcript", evidence.record->transcript}};
    return {{"scenario", scenario.name},
            {"good", faults.empty()},
            {"faults", json::value_from(faults)},
            {"record", std::move(record)},
            {"callee", leg(evidence.callee)},
            {"server", leg(evidence.server)},
            {"agentStats", measurements.applicationStats},
            {"responseSeconds", json::value_from(evidence.responseSeconds())},
            {"soundAfterInterruptionSeconds", json::value_from(evidence.soundAfterInterruptionSeconds())},
            {"cpuPercent", measurements.cpuPercent},
            {"residentMB", measurements.residentMB}};
}

} // namespace velto::rehearsal
