// The end of a rehearsal in words and in figures.
#include "rehearsal/director/Summary.h"

#include <boost/json.hpp>

#include <algorithm>
#include <deque>
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

constexpr std::size_t kLogLines = 12;

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

/// Who held the call, and what the checks of keys were answered with.
void printProviders(std::ostream& out, const Evidence& evidence) {
    out << "\nProvider\n ";
    for (const auto provider : evidence.sessions)
        out << ' ' << displayName(provider);
    out << (evidence.sessions.empty() ? " none" : "") << "; key checks:";
    for (const auto& [provider, status] : evidence.keyChecks)
        out << ' ' << displayName(provider) << ' ' << status;
    out << (evidence.keyChecks.empty() ? " none\n" : "\n");
}

json::array keyChecks(const Evidence& evidence) {
    json::array checks;
    for (const auto& [provider, status] : evidence.keyChecks)
        checks.push_back({{"provider", rawValue(provider)}, {"status", status}});
    return checks;
}

json::array sessions(const Evidence& evidence) {
    json::array all;
    for (const auto provider : evidence.sessions)
        all.emplace_back(rawValue(provider));
    return all;
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

std::string newestLines(const std::string& log) {
    std::deque<std::string> newest;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        const auto has = [&](const char* part) { return line.find(part) != std::string::npos; };
        if (has("session: agent: ") || has("session: caller: ") || has("session: stats: "))
            continue;
        newest.push_back(line);
        if (newest.size() > kLogLines)
            newest.pop_front();
    }
    std::string text;
    for (const auto& line : newest)
        text += line + "\n";
    return text;
}

void printSummary(std::ostream& out, const Evidence& evidence, const Measurements& measurements) {
    printProviders(out, evidence);
    out << "\nRecord\n";
    if (evidence.record) {
        out << "  " << evidence.record->number << ", " << seconds(evidence.record->duration) << '\n';
        std::istringstream lines(evidence.record->transcript);
        for (std::string line; std::getline(lines, line);)
            out << "  " << line << '\n';
    } else {
        out << "  none\n";
    }
    if (evidence.recording)
        out << "  recording: " << seconds(evidence.recording->seconds) << ", "
            << evidence.recording->heard.size() << " marks heard in it\n";
    out << "\nWhat every leg measured\n"
        << "  callee     said " << evidence.callee.framesOut << " frames at 24 kHz, peak "
        << evidence.callee.peakOut << "; heard " << evidence.callee.framesIn << " frames at 16 kHz, peak "
        << evidence.callee.peakIn << '\n'
        << "  server     received " << evidence.server.framesIn << " frames at "
        << evidence.serverRateIn / 1000 << " kHz, peak " << evidence.server.peakIn << "; sent "
        << evidence.server.framesOut << " frames at 24 kHz\n"
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

std::string goodEnd(const Scenario& scenario) {
    return scenario.end == CallEnd::noAnswer
               ? "nobody answered, the call ended, and what the agent said was heard by nobody"
               : "every line was decoded from sound at the other end";
}

void printVerdict(std::ostream& out, const std::string& good, const std::vector<std::string>& faults) {
    if (faults.empty())
        out << "\nGood: " << good << ".\n";
    else
        out << "\nFailed: " << faults.front() << '\n';
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
            {"sessions", sessions(evidence)},
            {"keyChecks", keyChecks(evidence)},
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
