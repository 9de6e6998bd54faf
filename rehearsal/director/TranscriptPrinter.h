// Prints a transcript while it grows.
#pragma once

#include "rehearsal/director/Evidence.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace velto::rehearsal {

/// A line is printed once it is finished; on a terminal the unfinished one is shown and rewritten in place.
/// Lines of the agent say whether the callee heard them.
class TranscriptPrinter {
  public:
    TranscriptPrinter(std::ostream& out, bool terminal, const Scenario& scenario, const Evidence& evidence);

    /// All lines so far; the last one may still grow.
    void show(const std::vector<std::string>& lines);
    /// A word of the director's between the lines.
    void note(const std::string& text);
    /// The call is over: nothing grows any more.
    void finish();

  private:
    std::string verdict(const std::string& line) const;
    void print(const std::string& line);

    std::ostream& out_;
    bool terminal_;
    const Scenario& scenario_;
    const Evidence& evidence_;
    std::vector<std::string> lines_;
    std::size_t printed_ = 0;
    std::string pending_;
};

} // namespace velto::rehearsal
