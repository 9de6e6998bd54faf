// The turns of one call: fragments of both sides gathered into finished lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velto {

/// Main thread. Fragments of a turn are joined as they are; within one turn the caller's line comes first.
class Transcript {
  public:
    void addCaller(std::string_view fragment) { caller_ += fragment; }
    void addAgent(std::string_view fragment) { agent_ += fragment; }

    /// The lines of the turn under way, trimmed: "Caller: …", then "Agent: …"; an empty side has none.
    std::vector<std::string> pending() const;
    /// The same, and begins a new turn.
    std::vector<std::string> flushTurn();
    void clear();

  private:
    std::string caller_;
    std::string agent_;
};

} // namespace velto
