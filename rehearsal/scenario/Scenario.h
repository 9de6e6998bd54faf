// One rehearsed call: who says what, when the phone is answered, how it ends.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velto::rehearsal {

enum class Side { agent, callee };
enum class CallEnd {
    agentHangsUp,  ///< the model says goodbye and calls end_call
    calleeHangsUp, ///< after the last line
    noAnswer,      ///< it rings until the line gives up
};

/// What befalls the machine in mid-call.
enum class Trouble {
    soundRestart,  ///< the sound server is killed and started again
    phoneStops,    ///< the phone app is stopped for four seconds, then goes on
    keyringKilled, ///< the keyring's daemon is killed
};

struct ScenarioLine {
    int mark = 0; ///< 0 to 99, unlike every other line's
    Side side = Side::agent;
    std::string text{};
    /// Callee only: how long after the silence that follows the line before, s.
    double pause = 0.2;
    /// Callee only: talk over the agent's line, this long after its begin mark was heard, s. That line is
    /// then cut: its begin is heard and its end is not.
    std::optional<double> over{};
    /// Callee only: this happens in the pause before the line.
    std::optional<Trouble> after{};
};

struct Scenario {
    std::string name;
    std::string about; ///< one sentence
    std::string number;
    std::string goal;
    /// How long it rings before it is answered or, with `noAnswer`, before the line gives up, s.
    double ringing = 1;
    /// The loudness of the callee's voice, a factor.
    double calleeLevel = 0.3;
    /// The callee hangs up when nothing was heard for so long after its own line, s.
    double patience = 8;
    /// From the call to its record, s.
    double deadline = 60;
    CallEnd end = CallEnd::agentHangsUp;
    /// The sides take turns.
    std::vector<ScenarioLine> lines;

    /// Index of the line with this mark.
    std::optional<std::size_t> find(int mark) const;
    /// Whether the line is talked over by the next.
    bool isCut(std::size_t index) const;
    /// Whether nobody is there to hear the line.
    bool isUnheard(std::size_t index) const;
    /// "Agent: " or "Caller: " and the text, as a transcript has it.
    std::string transcriptLine(std::size_t index) const;
};

} // namespace velto::rehearsal
