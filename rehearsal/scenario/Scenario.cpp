// Questions about a scenario.
#include "rehearsal/scenario/Scenario.h"

#include <algorithm>

namespace velto::rehearsal {

std::optional<std::size_t> Scenario::find(int mark) const {
    const auto found =
        std::find_if(lines.begin(), lines.end(), [=](const ScenarioLine& line) { return line.mark == mark; });
    if (found == lines.end())
        return {};
    return static_cast<std::size_t>(found - lines.begin());
}

bool Scenario::isCut(std::size_t index) const {
    return index + 1 < lines.size() && lines[index + 1].over.has_value();
}

bool Scenario::isUnheard(std::size_t index) const {
    return end == CallEnd::noAnswer && lines[index].side == Side::agent;
}

std::string Scenario::transcriptLine(std::size_t index) const {
    return (lines[index].side == Side::agent ? "Agent: " : "Caller: ") + lines[index].text;
}

} // namespace velto::rehearsal
