// Hears marks in a stream of sound.
#include "rehearsal/signal/MarkListener.h"

namespace velto::rehearsal {

MarkListener::MarkListener(double rate, std::function<void(const Mark&)> heard)
    : heard_(std::move(heard)), longestHole_(frameCount(Milliseconds(150), rate)),
      decoder_(rate, [this](const HeardSymbol& symbol) { symbolHeard(symbol); }) {}

void MarkListener::symbolHeard(const HeardSymbol& heard) {
    if (heard.firstFrame > lastFrame_ + longestHole_)
        recent_.clear();
    lastFrame_ = heard.endFrame;
    recent_ += heard.symbol;
    if (recent_.size() > Mark::length)
        recent_.erase(0, 1);
    if (const auto mark = Mark::parse(recent_)) {
        recent_.clear();
        heard_(*mark);
    }
}

} // namespace velto::rehearsal
