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

bool contains(const std::vector<Mark>& marks, Mark mark) {
    return std::find(marks.begin(), marks.end(), mark) != marks.end();
}

/// Whether anything of what was said reached the listener at all.
void checkWire(const Ear& ear, const Evidence& evidence, const std::vector<Mark>& heard,
               const std::vector<Mark>& expected, Faults& found) {
    if (!heard.empty() || expected.empty())
        return;
    const bool said = std::any_of(expected.begin(), expected.end(), [&](const Mark& mark) {
        return std::find(evidence.spoken.begin(), evidence.spoken.end(), mark.number) !=
               evidence.spoken.end();
    });
    found.push_back(std::string("the ") + ear.listener + " heard nothing: no mark reached " + ear.place +
                    (said ? "" : ", and nothing was said"));
}

void checkLines(const Scenario& scenario, const Ear& ear, const Evidence& evidence,
                const std::vector<Mark>& heard, Faults& found) {
    for (std::size_t i = 0; i < scenario.lines.size(); ++i) {
        const auto& line = scenario.lines[i];
        if (line.side != ear.speaker || scenario.isUnheard(i) ||
            std::find(evidence.spoken.begin(), evidence.spoken.end(), line.mark) == evidence.spoken.end())
            continue;
        const bool begin = contains(heard, {line.mark, Mark::Place::begin});
        const bool end = contains(heard, {line.mark, Mark::Place::end});
        const auto subject = std::string("the ") + ear.listener;
        if (!begin || (!end && !scenario.isCut(i)))
            found.push_back(subject + " did not hear " +
                            (begin ? "the end of "
                             : end ? "the begin of "
                                   : "") +
                            "line " + quoted(line));
        else if (end && scenario.isCut(i))
            found.push_back(subject + " heard line " + quoted(line) +
                            " to its end, though it was talked over");
    }
}

void checkEar(const Scenario& scenario, const Ear& ear, const Evidence& evidence,
              const std::vector<Evidence::HeardMark>& heardMarks, Faults& found) {
    const auto heard = marks(heardMarks);
    const auto expected = expectedMarks(scenario, ear.speaker);
    if (heard == expected || heard.empty())
        return;
    const auto before = found.size();
    checkLines(scenario, ear, evidence, heard, found);
    for (const auto& mark : heard)
        if (!contains(expected, mark) && !contains(expected, {mark.number, Mark::Place::begin}))
            found.push_back(std::string("the ") + ear.listener + " heard line " +
                            std::to_string(mark.number) + ", which should not have sounded there");
    const bool isBegin =
        heard.size() < expected.size() && std::equal(heard.begin(), heard.end(), expected.begin());
    if (found.size() == before && !isBegin)
        found.push_back(std::string("the ") + ear.listener +
                        " heard the lines in another order, or one twice");
}

void checkSpoken(const Scenario& scenario, const Evidence& evidence, Faults& found) {
    std::string missing;
    for (const auto& line : scenario.lines)
        if (std::find(evidence.spoken.begin(), evidence.spoken.end(), line.mark) == evidence.spoken.end())
            missing += (missing.empty() ? "" : ", ") + std::to_string(line.mark);
    if (!missing.empty())
        found.push_back("never said, because nothing led to it: line " + missing);
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
    const auto atMost = [&](int limit, int times, const std::string& what) {
        if (times > limit)
            found.push_back("the line was " + what + " " + std::to_string(times) + " times instead of " +
                            std::to_string(limit));
    };
    atMost(1, evidence.timesDialled, "dialled");
    atMost(scenario.end == CallEnd::noAnswer ? 0 : 1, evidence.timesAnswered, "answered");
    atMost(1, evidence.timesEnded, "ended");
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
        const auto wanted = i < scenario.lines.size() ? scenario.transcriptLine(i) : "";
        const auto got = i < lines.size() ? lines[i] : "";
        const bool cut = i < scenario.lines.size() && scenario.isCut(i);
        if (cut ? isProperPrefix(got, wanted, std::string("Agent: ").size()) : got == wanted)
            continue;
        if (i >= lines.size())
            found.push_back("the record ends before \"" + wanted + "\"");
        else if (i >= scenario.lines.size())
            found.push_back("the record goes on with \"" + got + "\"");
        else
            found.push_back(std::string("the record's line ")
                                .append(std::to_string(i + 1))
                                .append(" is \"")
                                .append(got)
                                .append(cut ? "\" instead of a part of \"" : "\" instead of \"")
                                .append(wanted)
                                .append("\""));
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
    const auto sound = evidence.soundAfterInterruptionSeconds();
    if (sound.size() < evidence.interruptions.size())
        found.emplace_back("after an interruption the sound at the callee never ended");
    for (const auto seconds : sound)
        if (seconds > kLongestSoundAfterInterruption)
            found.push_back("after an interruption the callee still heard the agent for " +
                            std::to_string(static_cast<int>(seconds * 1000)) + " ms");
}

const char* describe(Trouble trouble) {
    switch (trouble) {
    case Trouble::soundRestart:
        return "the sound server was not restarted";
    case Trouble::phoneStops:
        return "the phone app was not made to stand still";
    case Trouble::keyringKilled:
        return "the keyring was not killed";
    }
    return "";
}

void checkTroubles(const Scenario& scenario, const Evidence& evidence, Faults& found) {
    for (const auto& line : scenario.lines)
        if (line.after && !evidence.troubledBefore.contains(line.mark))
            found.push_back(std::string(describe(*line.after)) + " before line " + quoted(line));
}

void checkProvider(const Evidence& evidence, Faults& found) {
    for (const auto provider : evidence.sessions)
        if (provider != evidence.expectedProvider)
            found.push_back("the call was held by " + std::string(displayName(provider)) + " instead of " +
                            std::string(displayName(evidence.expectedProvider)));
}

void checkKeys(const Evidence& evidence, Faults& found) {
    // The keys in the keyring are right; what is no check at all is a violation.
    for (const auto& [provider, status] : evidence.keyChecks) {
        const std::string name(displayName(provider));
        if (!evidence.storedKeys.contains(provider))
            found.push_back(name + " was asked about a key, and none is stored");
        else if (status != 200 && status != 400)
            found.push_back("the check of the key for " + name + " was answered with " +
                            std::to_string(status) + " instead of 200");
    }
    for (const auto provider : evidence.storedKeys)
        if (std::ranges::none_of(evidence.keyChecks,
                                 [&](const Evidence::KeyCheck& check) { return check.provider == provider; }))
            found.push_back(std::string(displayName(provider)) + " was not asked whether it accepts the key");
    for (const auto& place : evidence.placesWithKey)
        found.push_back("an API key can be read in " + place);
    for (const auto* title : {kApplicationTitle, kPhoneTitle})
        if (!evidence.searchedForKeys.contains(title))
            found.push_back(std::string("nobody could look for the API keys in the command line of ") +
                            title);
}

void checkRecording(const Scenario& scenario, const Evidence& evidence, Faults& found) {
    if (!evidence.isRecorded)
        return;
    if (!evidence.recording) {
        found.emplace_back("the call was not recorded");
        return;
    }
    const auto heardByServer = marks(evidence.heardByServer);
    checkRecordedMarks(scenario, heardByServer, evidence.recording->heard, found);
    for (const auto& mark : evidence.recording->heard)
        if (!contains(heardByServer, mark))
            found.push_back("the recording holds line " + std::to_string(mark.number) +
                            ", which the agent did not hear");
}

} // namespace

void checkRecordedMarks(const Scenario& scenario, const std::vector<Mark>& heardByAgent,
                        const std::vector<Mark>& recorded, std::vector<std::string>& found) {
    for (const auto& mark : heardByAgent)
        if (mark.number != scenario.lines.front().mark && !contains(recorded, mark))
            found.push_back("the recording lacks a part of line " + std::to_string(mark.number));
}

std::vector<std::string> faults(const Scenario& scenario, const Evidence& evidence) {
    Faults found;
    for (const auto& violation : evidence.violations)
        found.push_back("the voice server refused the application: " + violation);
    checkProvider(evidence, found);
    const Ear agent{"agent", "the voice server", Side::callee};
    const Ear callee{"callee", "the phone's microphone input", Side::agent};
    checkWire(agent, evidence, marks(evidence.heardByServer), expectedMarks(scenario, Side::callee), found);
    checkWire(callee, evidence, marks(evidence.heardByCallee), expectedMarks(scenario, Side::agent), found);
    checkEar(scenario, agent, evidence, evidence.heardByServer, found);
    checkEar(scenario, callee, evidence, evidence.heardByCallee, found);
    checkSpoken(scenario, evidence, found);
    checkInterruptions(scenario, evidence, found);
    checkTroubles(scenario, evidence, found);
    checkEnd(scenario, evidence, found);
    checkRecord(scenario, evidence, found);
    checkRecording(scenario, evidence, found);
    if (evidence.tapUsed != evidence.tapWanted)
        found.emplace_back(evidence.tapWanted ? "the application did not tap the phone app"
                                              : "the application tapped the phone app unasked");
    checkKeys(evidence, found);
    if (evidence.longestHold && *evidence.longestHold > kLongestHold)
        found.push_back("the application took " +
                        std::to_string(static_cast<int>(*evidence.longestHold * 1000)) +
                        " ms to answer while the phone app stood still");
    if (evidence.serverClosed && evidence.closeCode != 1000)
        found.push_back("the application left the voice server with close code " +
                        std::to_string(evidence.closeCode) + " instead of 1000");
    if (!evidence.serverClosed)
        found.emplace_back("the application did not close its session with the voice server");
    if (evidence.defaultsAfter != evidence.defaultsBefore)
        found.push_back("the default devices are " + evidence.defaultsAfter.input + " and " +
                        evidence.defaultsAfter.output + " instead of " + evidence.defaultsBefore.input +
                        " and " + evidence.defaultsBefore.output);
    found.insert(found.end(), evidence.wrongEnds.begin(), evidence.wrongEnds.end());
    return found;
}

} // namespace velto::rehearsal
