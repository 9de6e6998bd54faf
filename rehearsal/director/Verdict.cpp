// Whether a rehearsal went as its scenario says.
#include "rehearsal/director/Verdict.h"

#include <algorithm>
#include <sstream>

namespace velto::rehearsal {
namespace {

using Faults = std::vector<std::string>;

std::string quoted(const ScenarioLine& line) {
    return std::to_string(line.mark) + " (\"" + line.text + "\")";
}

std::vector<Mark> marks(const std::vector<Evidence::HeardMark>& heard) {
    std::vector<Mark> all;
    std::transform(heard.begin(), heard.end(), std::back_inserter(all),
                   [](const Evidence::HeardMark& one) { return one.mark; });
    return all;
}

/// What one side's lines should sound like at the other end, in order.
std::vector<Mark> expectedMarks(const Scenario& scenario, Side side) {
    std::vector<Mark> all;
    for (std::size_t i = 0; i < scenario.lines.size(); ++i)
        if (const auto& line = scenario.lines[i]; line.side == side && !scenario.isUnheard(i)) {
            all.push_back({line.mark, Mark::Place::begin});
            if (!scenario.isCut(i))
                all.push_back({line.mark, Mark::Place::end});
        }
    return all;
}

struct Ear {
    const char* listener;
    const char* place;
    Side speaker;
};

void checkEar(const Scenario& scenario, const Ear& ear, const std::vector<Mark>& heard, Faults& found) {
    const auto expected = expectedMarks(scenario, ear.speaker);
    if (heard == expected)
        return;
    if (heard.empty()) {
        found.push_back(std::string("the ") + ear.listener + " heard nothing: no mark reached " + ear.place);
        return;
    }
    const auto before = found.size();
    for (const auto& mark : expected)
        if (std::find(heard.begin(), heard.end(), mark) == heard.end())
            found.push_back(std::string("the ") + ear.listener + " did not hear the " +
                            (mark.place == Mark::Place::begin ? "begin" : "end") + " of line " +
                            quoted(scenario.lines[*scenario.find(mark.number)]));
    for (const auto& mark : heard)
        if (std::find(expected.begin(), expected.end(), mark) == expected.end())
            found.push_back(std::string("the ") + ear.listener + " heard the " +
                            (mark.place == Mark::Place::begin ? "begin" : "end") + " of line " +
                            std::to_string(mark.number) + ", which should not have sounded there");
    if (found.size() == before)
        found.push_back(std::string("the ") + ear.listener +
                        " heard the lines in another order, or one twice");
}

void checkEnd(const Scenario& scenario, const Evidence& evidence, Faults& found) {
    if (!evidence.dialled) {
        found.emplace_back("the phone was never dialled");
        return;
    }
    if (*evidence.dialled != scenario.number)
        found.push_back("the phone dialled " + *evidence.dialled + " instead of " + scenario.number);
    const std::string wanted = scenario.end == CallEnd::agentHangsUp    ? "hung up by the caller"
                               : scenario.end == CallEnd::calleeHangsUp ? "callee hung up"
                                                                        : "no answer";
    if (!evidence.ended)
        found.emplace_back("the line was still open at the end");
    else if (*evidence.ended != wanted)
        found.push_back("the call ended with \"" + *evidence.ended + "\" instead of \"" + wanted + "\"");
    if (scenario.end == CallEnd::agentHangsUp && evidence.endCallAsked && !evidence.endCallAnswered)
        found.emplace_back("the model's call of end_call was not answered");
}

bool isProperPrefix(const std::string& line, const std::string& whole, std::size_t header) {
    return line.size() > header && line.size() < whole.size() && whole.starts_with(line);
}

void checkRecord(const Scenario& scenario, const Evidence& evidence, Faults& found) {
    if (!evidence.record) {
        found.emplace_back("the history has no record of the call");
        return;
    }
    if (evidence.record->number != scenario.number)
        found.push_back("the record has the number " + evidence.record->number);
    std::vector<std::string> lines;
    std::istringstream text(evidence.record->transcript);
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    for (std::size_t i = 0; i < std::max(lines.size(), scenario.lines.size()); ++i) {
        const auto wanted = i < scenario.lines.size() ? scenario.transcriptLine(i) : "nothing";
        const auto got = i < lines.size() ? lines[i] : "nothing";
        const bool cut = i < scenario.lines.size() && scenario.isCut(i);
        if (cut ? isProperPrefix(got, wanted, std::string("Agent: ").size()) : got == wanted)
            continue;
        found.push_back("the record's line " + std::to_string(i + 1) + " is \"" + got + "\" instead of " +
                        (cut ? "a part of " : "") + "\"" + wanted + "\"");
        return;
    }
}

void checkInterruptions(const Scenario& scenario, const Evidence& evidence, Faults& found) {
    std::size_t expected = 0;
    for (std::size_t i = 0; i < scenario.lines.size(); ++i)
        expected += scenario.isCut(i) ? 1 : 0;
    if (evidence.interruptions.size() != expected)
        found.push_back("the voice server noticed " + std::to_string(evidence.interruptions.size()) +
                        " interruptions instead of " + std::to_string(expected));
    for (const auto seconds : evidence.soundAfterInterruptionSeconds())
        if (seconds > kLongestSoundAfterInterruption)
            found.push_back("after an interruption the callee still heard the agent for " +
                            std::to_string(static_cast<int>(seconds * 1000)) + " ms");
}

} // namespace

std::vector<std::string> faults(const Scenario& scenario, const Evidence& evidence) {
    Faults found;
    for (const auto& violation : evidence.violations)
        found.push_back("the voice server refused the application: " + violation);
    checkEar(scenario, {"agent", "the voice server", Side::callee}, marks(evidence.heardByServer), found);
    checkEar(scenario, {"callee", "the phone's microphone input", Side::agent}, marks(evidence.heardByCallee),
             found);
    checkInterruptions(scenario, evidence, found);
    checkEnd(scenario, evidence, found);
    checkRecord(scenario, evidence, found);
    if (evidence.serverClosed && evidence.closeCode != 1000)
        found.push_back("the application left the voice server with close code " +
                        std::to_string(evidence.closeCode) + " instead of 1000");
    if (!evidence.serverClosed)
        found.emplace_back("the application did not close its session with the voice server");
    if (evidence.defaultsAfter != evidence.defaultsBefore)
        found.push_back("the default devices are " + evidence.defaultsAfter.input + " and " +
                        evidence.defaultsAfter.output + " instead of " + evidence.defaultsBefore.input +
                        " and " + evidence.defaultsBefore.output);
    return found;
}

} // namespace velto::rehearsal
