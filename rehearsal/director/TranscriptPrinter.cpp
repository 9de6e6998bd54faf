// Prints a transcript while it grows.
#include "rehearsal/director/TranscriptPrinter.h"

#include <algorithm>
#include <ostream>

namespace velto::rehearsal {

TranscriptPrinter::TranscriptPrinter(std::ostream& out, bool terminal, const Scenario& scenario,
                                     const Evidence& evidence)
    : out_(out), terminal_(terminal), scenario_(scenario), evidence_(evidence) {}

std::string TranscriptPrinter::verdict(const std::string& line) const {
    // Which line it is, is read off its text; whether it was heard, off the marks alone.
    bool begun = false;
    for (std::size_t i = 0; i < scenario_.lines.size(); ++i) {
        const auto wanted = scenario_.transcriptLine(i);
        const auto mark = scenario_.lines[i].mark;
        const bool cut = scenario_.isCut(i);
        begun = begun || wanted.starts_with(line);
        if (cut ? line.size() < 8 || !wanted.starts_with(line) : wanted != line)
            continue;
        if (scenario_.lines[i].side == Side::callee)
            return "heard by the agent";
        if (evidence_.calleeHeard(mark, Mark::Place::end))
            return "heard by the callee";
        return evidence_.calleeHeard(mark, Mark::Place::begin) ? "heard in part by the callee"
                                                               : "not heard by the callee";
    }
    return begun ? "unfinished" : "not a line of the scenario";
}

void TranscriptPrinter::note(const std::string& text) {
    if (terminal_)
        out_ << "\r\033[K";
    out_ << "  " << text << std::endl;
    pending_.clear();
}

void TranscriptPrinter::print(const std::string& line) {
    if (terminal_)
        out_ << "\r\033[K";
    out_ << "  " << line << "   [" << verdict(line) << "]" << std::endl;
    pending_.clear();
}

void TranscriptPrinter::show(const std::vector<std::string>& lines) {
    if (lines.size() < lines_.size())
        return;
    lines_ = lines;
    while (printed_ + 1 < lines_.size())
        print(lines_[printed_++]);
    if (terminal_ && printed_ < lines_.size() && pending_ != lines_[printed_]) {
        pending_ = lines_[printed_];
        // Not past the edge of a small terminal, where a carriage return goes back one row only.
        const auto tail = pending_.size() > 70 ? "…" + pending_.substr(pending_.size() - 70) : pending_;
        out_ << "\r\033[K  " << tail << std::flush;
    }
}

void TranscriptPrinter::finish() {
    while (printed_ < lines_.size())
        print(lines_[printed_++]);
}

} // namespace velto::rehearsal
