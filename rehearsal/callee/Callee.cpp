// The person at the other end of the phone's line.
#include "rehearsal/callee/Callee.h"

#include "rehearsal/signal/LineVoice.h"

#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

namespace asio = boost::asio;
constexpr const char* kVoice = "en-gb";
constexpr std::chrono::milliseconds kTick{10};

} // namespace

Callee::Callee(asio::io_context& context, const Scenario& scenario, Hooks hooks)
    : context_(context), scenario_(scenario), hooks_(std::move(hooks)) {
    for (const auto& line : scenario.lines)
        voices_.push_back(
            line.side == Side::callee
                ? speakLine(line.mark, line.text, kVoice, PhoneAudio::mouthRate, scenario.calleeLevel).samples
                : Samples());
}

asio::awaitable<void> Callee::run() {
    asio::steady_timer timer(context_);
    while (true) {
        timer.expires_after(kTick);
        co_await timer.async_wait(asio::use_awaitable);
        tick();
    }
}

void Callee::dial(const std::string& number) {
    if (state_ != State::idle)
        return;
    state_ = State::ringing;
    measures_ = {};
    ringingSince_ = monotonicNow();
    hooks_.report({{"event", "dialled"}, {"number", number}});
    hooks_.ringing();
}

void Callee::hangUp(const std::string& reason) {
    if (state_ != State::idle)
        end(reason);
}

void Callee::sendTones(const std::string& digits) {
    if (state_ == State::answered)
        hooks_.report({{"event", "tones"}, {"digits", digits}});
}

void Callee::tick() {
    const auto now = monotonicNow();
    if (state_ == State::ringing && now - ringingSince_ >= std::chrono::duration<double>(scenario_.ringing)) {
        if (scenario_.end == CallEnd::noAnswer)
            end("no answer");
        else
            answer();
    } else if (state_ == State::answered) {
        talk_->tick(now);
    }
}

void Callee::answer() {
    state_ = State::answered;
    ++call_;
    const auto now = monotonicNow();
    talk_.emplace(scenario_,
                  CalleeTalk::Hooks{[this](std::size_t line) { audio_->say(voices_[line]); },
                                    [this](const std::string& reason) {
                                        // Not from within the talk that this ends.
                                        asio::post(context_, [this, reason, call = call_] {
                                            if (call == call_ && state_ == State::answered)
                                                end(reason);
                                        });
                                    },
                                    hooks_.report},
                  now);
    openAudio();
    hooks_.report({{"event", "answered"}, {"at", now.count()}});
    hooks_.answered();
}

void Callee::openAudio() {
    const auto onMyThread = [this, call = call_](auto work) {
        asio::post(context_, [this, call, work = std::move(work)] {
            if (call == call_ && state_ == State::answered)
                work();
        });
    };
    audio_ = std::make_unique<PhoneAudio>(PhoneAudio::Callbacks{
        [this, onMyThread](Samples samples, PhoneAudio::Time end) {
            onMyThread([this, samples = std::move(samples), end] { talk_->hear(samples, end); });
        },
        [this, onMyThread](PhoneAudio::Time when) { onMyThread([this, when] { talk_->said(when); }); }});
}

void Callee::end(const std::string& reason) {
    state_ = State::idle;
    if (audio_)
        measures_ = audio_->measures();
    audio_.reset();
    talk_.reset();
    hooks_.report({{"event", "ended"}, {"reason", reason}, {"at", monotonicNow().count()}});
    reportMeasures();
    hooks_.ended(reason);
}

void Callee::reportMeasures() {
    hooks_.report({{"event", "measures"},
                   {"framesHeard", measures_.framesHeard},
                   {"peakHeard", measures_.peakHeard},
                   {"framesSaid", measures_.framesSaid},
                   {"peakSaid", measures_.peakSaid}});
}

} // namespace velto::rehearsal
