// Turns successive looks at a growing transcript into lines that are only ever appended.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace velto::ctl {

/// The last turn of a running session, "Caller: …" and then "Agent: …", is still being spoken: both lines may
/// grow, and the caller's may still appear before the agent's. Lines before it are final. A line is printed
/// when it is final or when the transcript has not changed for some looks; what a printed line gains later is
/// printed as a line of its own, "Agent: … and the rest".
class TranscriptPrinter {
  public:
    /// Looks without a change after which unfinished lines are printed, too.
    static constexpr int kLooksUntilSettled = 3;

    explicit TranscriptPrinter(std::function<void(const std::string&)> print) : print_(std::move(print)) {}

    void look(const std::vector<std::string>& lines);
    /// Prints what is final and nothing else.
    void lookAtFinal(const std::vector<std::string>& lines);
    /// The last look: everything is final.
    void finish(const std::vector<std::string>& lines);

  private:
    void finishUpTo(const std::vector<std::string>& lines, std::size_t end);
    void show(const std::string& line);

    std::function<void(const std::string&)> print_;
    std::vector<std::string> seen_;
    int unchanged_ = 0;
    std::size_t finished_ = 0;                 ///< lines that are final and printed
    std::map<std::string, std::string> shown_; ///< unfinished lines that are printed, by speaker
};

} // namespace velto::ctl
