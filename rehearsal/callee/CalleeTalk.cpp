// What the person on the line does during one answered call.
#include "rehearsal/callee/CalleeTalk.h"

#include <algorithm>

namespace velto::rehearsal {
namespace {

using namespace std::chrono_literals;

constexpr double kRate = 16000;
/// Between the last word and the hand that hangs up.
constexpr auto kBeforeHangingUp = 300ms;

CalleeTalk::Time seconds(double count) {
    return std::chrono::duration_cast<CalleeTalk::Time>(std::chrono::duration<double>(count));
}

} // namespace

CalleeTalk::CalleeTalk(const Scenario& scenario, Hooks hooks, Time now)
    : scenario_(scenario), hooks_(std::move(hooks)),
      listener_(kRate, [this](const Mark& mark) { markHeard(mark); }),
      activity_(
          {.rate = kRate, .threshold = 0.003, .onset = Milliseconds(20), .hangover = Milliseconds(400)}),
      lastSound_(now) {}

void CalleeTalk::hear(std::span<const std::int16_t> samples, Time end) {
    hearing_ = end;
    listener_.feed(samples);
    for (const auto& change : activity_.feed(samples))
        activityChanged(change, end);
    if (activity_.active())
        lastSound_ = std::max(lastSound_, end);
}

void CalleeTalk::markHeard(const Mark& mark) {
    const auto index = scenario_.find(mark.number);
    const bool whole = mark.place == Mark::Place::end;
    report("heard", hearing_, {{"mark", mark.number}, {"whole", whole}});
    if (!index || scenario_.lines[*index].side != Side::agent)
        return;
    if (!whole)
        beginHeard_ = hearing_;
    // A line that is to be talked over is answered from its begin on.
    if ((whole || scenario_.isCut(*index)) && *index + 1 > next_)
        next_ = *index + 1;
}

void CalleeTalk::activityChanged(const ActivityDetector::Change& change, Time end) {
    const auto behind = static_cast<double>(activity_.frames() - change.frame) / kRate;
    report(change.active ? "soundBegins" : "soundEnds", end - seconds(behind));
}

void CalleeTalk::said(Time when) {
    talking_ = false;
    lastSaid_ = when;
    lastSound_ = std::max(lastSound_, when);
    report("said", when);
}

bool CalleeTalk::mayTalk(const ScenarioLine& line, Time now) const {
    if (line.over)
        return beginHeard_ && now - *beginHeard_ >= seconds(*line.over);
    return !activity_.active() && now - lastSound_ >= seconds(line.pause);
}

void CalleeTalk::tick(Time now) {
    if (hungUp_ || talking_)
        return;
    if (next_ == scenario_.lines.size() && scenario_.end == CallEnd::calleeHangsUp) {
        if (now - lastSaid_ >= kBeforeHangingUp)
            hangUp("callee hung up");
        return;
    }
    if (next_ < scenario_.lines.size() && scenario_.lines[next_].side == Side::callee &&
        mayTalk(scenario_.lines[next_], now)) {
        report("says", now, {{"mark", scenario_.lines[next_].mark}});
        talking_ = true;
        hooks_.say(next_++);
        return;
    }
    if (now - lastSound_ >= seconds(scenario_.patience))
        hangUp("callee lost patience");
}

void CalleeTalk::hangUp(const std::string& reason) {
    hungUp_ = true;
    hooks_.hangUp(reason);
}

void CalleeTalk::report(const char* event, Time at, boost::json::object more) {
    more["event"] = event;
    more["at"] = at.count();
    hooks_.report(std::move(more));
}

} // namespace velto::rehearsal
