// The phone's line and the person at its other end.
#include "rehearsal/callee/Callee.h"

#include "rehearsal/signal/LineVoice.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

namespace asio = boost::asio;
constexpr const char* kVoice = "en-gb";
constexpr std::chrono::milliseconds kTick{10};

std::string textOf(const boost::json::object& object, std::string_view key) {
    const auto* value = object.if_contains(key);
    return value != nullptr && value->is_string() ? std::string(value->get_string()) : std::string();
}

} // namespace

Callee::Callee(asio::io_context& context, const Scenario& scenario, const std::string& socketPath,
               Report report)
    : context_(context), scenario_(scenario), report_(std::move(report)),
      socket_(context.get_executor(), socketPath,
              {[this](const boost::json::object& message) { received(message); },
               [this] {
                   if (state_ != State::idle)
                       end("the desktop has gone");
               }}) {
    for (const auto& line : scenario.lines)
        voices_.push_back(
            line.side == Side::callee
                ? speakLine(line.mark, line.text, kVoice, PhoneAudio::mouthRate, scenario.calleeLevel).samples
                : Samples());
}

asio::awaitable<void> Callee::run() {
    asio::co_spawn(context_, socket_.serve(), asio::detached);
    report_({{"event", "ready"}});
    asio::steady_timer timer(context_);
    while (true) {
        timer.expires_after(kTick);
        co_await timer.async_wait(asio::use_awaitable);
        tick();
    }
}

void Callee::received(const boost::json::object& message) {
    const auto what = textOf(message, "line");
    if (what == "dial" && state_ == State::idle)
        dialled(textOf(message, "number"));
    else if (what == "hangup" && state_ != State::idle)
        end("hung up by the caller");
}

void Callee::dialled(const std::string& number) {
    state_ = State::ringing;
    ringingSince_ = monotonicNow();
    report_({{"event", "dialled"}, {"number", number}});
    socket_.send({{"line", "ringing"}});
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
                                    report_},
                  now);
    openAudio();
    report_({{"event", "answered"}, {"at", now.count()}});
    socket_.send({{"line", "answered"}});
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
    report_({{"event", "ended"}, {"reason", reason}, {"at", monotonicNow().count()}});
    reportMeasures();
    socket_.send({{"line", "ended"}, {"reason", reason}});
}

void Callee::reportMeasures() {
    const auto measures = audio_ ? audio_->measures() : measures_;
    report_({{"event", "measures"},
             {"framesHeard", measures.framesHeard},
             {"peakHeard", measures.peakHeard},
             {"framesSaid", measures.framesSaid},
             {"peakSaid", measures.peakSaid}});
}

} // namespace velto::rehearsal
