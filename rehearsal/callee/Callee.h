// The person at the other end of the phone's line.
#pragma once

#include "rehearsal/callee/CalleeTalk.h"
#include "rehearsal/callee/PhoneAudio.h"

#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <optional>

namespace velto::rehearsal {

/// One call at a time. Sound is recorded and played while the line is answered and not otherwise. Everything
/// runs on the thread that runs the context, the hooks included.
class Callee {
  public:
    /// How the call goes on, told to whoever placed it.
    struct Hooks {
        std::function<void()> ringing;
        std::function<void()> answered;
        /// The last of a call; the next may be placed from within.
        std::function<void(const std::string& reason)> ended;
        Report report;
    };

    /// Speaks all lines of the scenario first: some 50 ms for each where a synthesiser is installed.
    Callee(boost::asio::io_context& context, const Scenario& scenario, Hooks hooks);

    boost::asio::awaitable<void> run();
    /// Does nothing while there is a call.
    void dial(const std::string& number);
    /// Does nothing without a call.
    void hangUp(const std::string& reason);
    /// The caller pressed keys; heard by nobody but the report.
    void sendTones(const std::string& digits);

  private:
    enum class State { idle, ringing, answered };

    void tick();
    void answer();
    void end(const std::string& reason);
    void openAudio();
    void reportMeasures();

    boost::asio::io_context& context_;
    const Scenario& scenario_;
    Hooks hooks_;
    std::vector<Samples> voices_; ///< by line; empty for the agent's
    State state_ = State::idle;
    std::chrono::nanoseconds ringingSince_{};
    std::optional<CalleeTalk> talk_;
    std::unique_ptr<PhoneAudio> audio_;
    PhoneAudio::Measures measures_; ///< of the last call
    unsigned call_ = 0;             ///< what audio of an earlier call still brings is dropped
};

} // namespace velto::rehearsal
