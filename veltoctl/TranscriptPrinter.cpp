// Where the unfinished turn begins, and what of it has been said already.
#include "veltoctl/TranscriptPrinter.h"

namespace velto::ctl {
namespace {

const std::string kCaller = "Caller: ";
const std::string kAgent = "Agent: ";

std::size_t beginOfLastTurn(const std::vector<std::string>& lines) {
    auto begin = lines.size();
    if (begin > 0 && lines[begin - 1].starts_with(kAgent))
        --begin;
    if (begin > 0 && lines[begin - 1].starts_with(kCaller))
        --begin;
    return begin;
}

std::string speaker(const std::string& line) {
    const auto colon = line.find(": ");
    return colon == std::string::npos ? std::string() : line.substr(0, colon + 2);
}

} // namespace

void TranscriptPrinter::look(const std::vector<std::string>& lines) {
    unchanged_ = lines == seen_ ? unchanged_ + 1 : 0;
    seen_ = lines;
    const auto turn = beginOfLastTurn(lines);
    finishUpTo(lines, turn);
    if (unchanged_ == kLooksUntilSettled)
        for (auto i = std::max(turn, finished_); i < lines.size(); ++i)
            show(lines[i]);
}

void TranscriptPrinter::lookAtFinal(const std::vector<std::string>& lines) {
    finishUpTo(lines, beginOfLastTurn(lines));
}

void TranscriptPrinter::finish(const std::vector<std::string>& lines) {
    finishUpTo(lines, lines.size());
}

void TranscriptPrinter::finishUpTo(const std::vector<std::string>& lines, std::size_t end) {
    for (; finished_ < end; ++finished_) {
        show(lines[finished_]);
        shown_.erase(speaker(lines[finished_]));
    }
}

void TranscriptPrinter::show(const std::string& line) {
    const auto who = speaker(line);
    auto& shown = shown_[who];
    if (shown.empty() || !line.starts_with(shown)) {
        print_(line);
    } else if (const auto from = line.find_first_not_of(' ', shown.size()); from != std::string::npos) {
        print_(who + "… " + line.substr(from));
    }
    shown = line;
}

} // namespace velto::ctl
