// The model of a rehearsal.
#include "rehearsal/server/Conversation.h"

#include <algorithm>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;
using namespace std::chrono_literals;

constexpr double kRateOut = 24000;
/// 48 000 bytes, and smaller ones at the start of a line, for the first sound to come early.
constexpr std::size_t kLargestChunk = 24000;
constexpr std::size_t kFirstChunk = 4800;
constexpr int kFasterThanPlayed = 5;
/// When the greeting was asked for and the callee, who was to speak first, says nothing.
constexpr auto kSilenceBeforeGreeting = 4s;

Conversation::Time played(std::size_t frames) {
    return Conversation::Time(static_cast<std::int64_t>(static_cast<double>(frames) / kRateOut * 1e9));
}

/// Words with the blank that separates them from the word before, spread over the time of the words.
std::deque<std::pair<Conversation::Time, std::string>> fragments(const std::string& text,
                                                                 const SpokenLine& spoken) {
    std::deque<std::pair<Conversation::Time, std::string>> result;
    const auto span = static_cast<double>(spoken.wordsEnd - spoken.wordsBegin);
    for (std::size_t at = 0; at < text.size();) {
        const auto end = std::min(text.find(' ', at + 1), text.size());
        const auto share = static_cast<double>(at) / static_cast<double>(text.size());
        result.emplace_back(played(spoken.wordsBegin + static_cast<std::size_t>(share * span)),
                            text.substr(at, end - at));
        at = end;
    }
    return result;
}

} // namespace

Conversation::Conversation(const Scenario& scenario, const Voices& voices, ServerProtocol& protocol,
                           Report report)
    : scenario_(scenario), voices_(voices), protocol_(protocol), report_(std::move(report)),
      listener_(protocol.inputRate(), [this](const Mark& mark) { markHeard(mark, hearing_); }),
      activity_({.rate = protocol.inputRate(),
                 .threshold = 0.01,
                 .onset = Milliseconds(50),
                 .hangover = Milliseconds(500)}) {}

void Conversation::start(Time now) {
    protocol_.configured();
    report("setup", now);
}

void Conversation::greet(Time now) {
    greetAsked_ = now;
    report("greetAsked", now);
}

void Conversation::hear(std::span<const std::int16_t> samples, Time now) {
    framesIn_ += samples.size();
    peakIn_ = std::max(peakIn_, peak(samples));
    hearing_ = now;
    // Marks first: the end of a turn must not be seen before the mark that ended it.
    listener_.feed(samples);
    for (const auto& change : activity_.feed(samples))
        activityChanged(change, now);
}

void Conversation::toolAnswered() {
    toolAnswered_ = true;
    protocol_.toolAnswered();
}

ServerProtocol::Position Conversation::position(std::uint64_t frames) const {
    return ServerProtocol::Position(
        static_cast<std::int64_t>(static_cast<double>(frames) / protocol_.inputRate() * 1000));
}

void Conversation::markHeard(const Mark& mark, Time now) {
    const auto index = scenario_.find(mark.number);
    const bool whole = mark.place == Mark::Place::end;
    report("heard", now, {{"mark", mark.number}, {"whole", whole}});
    if (!whole || !index || scenario_.lines[*index].side != Side::callee)
        return;
    protocol_.callerSaid(scenario_.lines[*index].text, position(framesIn_));
    next_ = std::max(next_, *index + 1);
}

void Conversation::activityChanged(const ActivityDetector::Change& change, Time now) {
    report(change.active ? "callerTalks" : "callerSilent", now);
    if (change.active)
        protocol_.callerBegins(position(change.frame));
    else
        protocol_.callerEnds(position(change.frame));
    if (change.active && speaking_ && now - speaking_->began < played(speaking_->framesSent))
        interrupt(now);
}

void Conversation::interrupt(Time now) {
    protocol_.interrupted();
    report("interrupted", now, {{"mark", scenario_.lines[speaking_->line].mark}});
    next_ = speaking_->line + 1;
    speaking_.reset();
}

bool Conversation::mayGreetWithoutHearing(Time now) const {
    return next_ == 0 && scenario_.lines.size() > 1 && now - *greetAsked_ > kSilenceBeforeGreeting;
}

void Conversation::tick(Time now) {
    if (speaking_)
        return continueSpeaking(now);
    if (!greetAsked_ || activity_.active())
        return;
    if (next_ < scenario_.lines.size() && scenario_.lines[next_].side == Side::agent)
        speak(next_, now);
    else if (mayGreetWithoutHearing(now))
        speak(1, now);
}

void Conversation::speak(std::size_t line, Time now) {
    const auto voice = voices_.find(scenario_.lines[line].mark);
    if (voice == voices_.end())
        return;
    next_ = line;
    speaking_ = Speaking{line, &voice->second, now, 0, fragments(scenario_.lines[line].text, voice->second)};
    report("speaks", now, {{"mark", scenario_.lines[line].mark}});
    protocol_.turnBegins();
    continueSpeaking(now);
}

void Conversation::continueSpeaking(Time now) {
    auto& speaking = *speaking_;
    const auto& samples = speaking.spoken->samples;
    const auto elapsed = now - speaking.began;
    while (speaking.framesSent < samples.size() &&
           played(speaking.framesSent) <= elapsed * kFasterThanPlayed) {
        const auto limit = speaking.framesSent == 0 ? kFirstChunk : kLargestChunk;
        const auto part = std::span(samples).subspan(speaking.framesSent,
                                                     std::min(limit, samples.size() - speaking.framesSent));
        protocol_.audio(part);
        speaking.framesSent += part.size();
        framesOut_ += part.size();
    }
    for (; !speaking.fragments.empty() && speaking.fragments.front().first <= elapsed;
         speaking.fragments.pop_front())
        protocol_.agentSaid(speaking.fragments.front().second);
    if (elapsed >= played(samples.size()))
        endSpeaking(now);
}

void Conversation::endSpeaking(Time now) {
    const auto line = speaking_->line;
    speaking_.reset();
    report("spoke", now, {{"mark", scenario_.lines[line].mark}});
    next_ = line + 1;
    if (next_ < scenario_.lines.size() || scenario_.end != CallEnd::agentHangsUp)
        return protocol_.turnEnds({});
    protocol_.turnEnds("goal met");
    report("endCall", now);
}

json::object Conversation::measures() const {
    return {{"framesIn", framesIn_},
            {"rateIn", protocol_.inputRate()},
            {"peakIn", peakIn_},
            {"framesOut", framesOut_},
            {"toolAnswered", toolAnswered_}};
}

void Conversation::report(const char* event, Time now, json::object more) {
    more["event"] = event;
    more["at"] = now.count();
    report_(std::move(more));
}

} // namespace velto::rehearsal
