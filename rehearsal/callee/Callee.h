// The phone's line and the person at its other end.
#pragma once

#include "rehearsal/callee/CalleeTalk.h"
#include "rehearsal/callee/LineSocket.h"
#include "rehearsal/callee/PhoneAudio.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <optional>

namespace velto::rehearsal {

/// From the desktop: {"line":"dial","number":…}, {"line":"hangup"}. To the desktop: {"line":"ringing"},
/// {"line":"answered"}, {"line":"ended","reason":…}. Sound is recorded and played while the line is answered
/// and not otherwise. Everything runs on the thread that runs the context.
class Callee {
  public:
    /// Throws boost::system::system_error when the socket cannot be made.
    Callee(boost::asio::io_context& context, const Scenario& scenario, const std::string& socketPath,
           Report report);

    boost::asio::awaitable<void> run();
    void reportMeasures();

  private:
    enum class State { idle, ringing, answered };

    void received(const boost::json::object& message);
    void dialled(const std::string& number);
    void tick();
    void answer();
    void end(const std::string& reason);
    void openAudio();

    boost::asio::io_context& context_;
    const Scenario& scenario_;
    Report report_;
    std::vector<Samples> voices_; ///< by line; empty for the agent's
    LineSocket socket_;
    State state_ = State::idle;
    std::chrono::nanoseconds ringingSince_{};
    std::optional<CalleeTalk> talk_;
    std::unique_ptr<PhoneAudio> audio_;
    PhoneAudio::Measures measures_; ///< of the last call
    unsigned call_ = 0;             ///< what audio of an earlier call still brings is dropped
};

} // namespace velto::rehearsal
