// What carries a call: the phone knows no more of telephony than this.
#pragma once

#include <functional>
#include <string>

namespace velto::phone {

/// How one call goes on, told by its line. The functions may be called on any thread; `ended` is the last of
/// a call and comes exactly once, the others at most once and in this order.
struct LineEvents {
    std::function<void()> ringing;  ///< at the other end
    std::function<void()> answered; ///< sound passes, from the default input and to the default output
    /// For people: one of the two below, or "busy", "the modem has gone". Also how a dial that fails is told.
    std::function<void(const std::string& reason)> ended;

    static constexpr const char* hungUpHere = "hung up by the caller";
    static constexpr const char* hungUpThere = "callee hung up";
};

/// One call at a time. The operations are called on one thread and answer at once: a line that has to wait
/// for a modem or a bus does so on a thread of its own. With its destruction a call is hung up and the events
/// stop; it waits for that, and happens also when the process ends by `exit`. Killed, a process hangs up
/// nothing, and what carried the call has to notice.
class Line {
  public:
    virtual ~Line() = default;

    /// `number` is what `phoneNumber` lets pass. With a call up already, this one ends with a reason.
    virtual void dial(const std::string& number, LineEvents events) = 0;
    /// Ends the call in any of its states; nothing without one. `ended` follows.
    virtual void hangUp() = 0;
    /// Of "0123456789*#"; nothing unless the call is answered.
    virtual void sendTones(const std::string& digits) = 0;
};

} // namespace velto::phone
