#include "VeltoApp/session/Transcript.h"

#include "VeltoShared/core/TextTrim.h"

namespace velto {

std::vector<std::string> Transcript::pending() const {
    std::vector<std::string> lines;
    if (const auto text = trimBlanksAndNewlines(caller_); !text.empty())
        lines.push_back("Caller: " + std::string(text));
    if (const auto text = trimBlanksAndNewlines(agent_); !text.empty())
        lines.push_back("Agent: " + std::string(text));
    return lines;
}

std::vector<std::string> Transcript::flushTurn() {
    auto lines = pending();
    clear();
    return lines;
}

void Transcript::clear() {
    caller_.clear();
    agent_.clear();
}

} // namespace velto
