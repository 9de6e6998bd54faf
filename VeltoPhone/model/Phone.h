// The phone: what it shows of a call, and what a person can do about it.
#pragma once

#include "VeltoPhone/line/Line.h"
#include "VeltoShared/core/Clock.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>

namespace velto::phone {

enum class PhoneState {
    idle,
    offered, ///< a number that can be called
    refused, ///< something was opened that is no number
    dialing, ///< the line has been asked, and has not answered yet
    ringing,
    active,
    ended, ///< for `Phone::shownAfterEnd`, then idle
};

/// One call at a time. Everything on Qt's main thread; the line's events are brought there.
class Phone : public QObject {
    Q_OBJECT

  public:
    static constexpr std::chrono::seconds shownAfterEnd{3};
    /// A line that was told to hang up and says nothing for so long is taken for dead.
    static constexpr std::chrono::seconds lineMayTakeToEnd{5};

    /// Without a line, numbers are offered but cannot be called.
    explicit Phone(std::unique_ptr<Line> line);

    PhoneState state() const { return state_; }
    bool hasLine() const { return line_ != nullptr; }
    /// Dialing, ringing or active.
    bool callUp() const;
    /// The line was told to hang up, and has not said yet that the call is over.
    bool ending() const { return hungUp_.has_value(); }
    /// Of the call or the offer; empty when idle or refused.
    const QString& number() const { return number_; }
    /// Why it was refused or has ended.
    const QString& reason() const { return reason_; }
    /// What else there is to say during a call, such as a number that was opened meanwhile; often empty.
    const QString& notice() const { return notice_; }
    /// The keys pressed during this call.
    const QString& tones() const { return tones_; }
    /// m:ss since the answer, minutes beyond 59 too.
    QString runningTime() const;

    /// Offers or refuses a number as in `phoneNumber`. A call that is up goes on undisturbed, with a notice;
    /// a number is then offered when that call is over, the last one where there were several.
    void open(const QString& text);
    /// Calls the number that is offered.
    void call();
    /// Nothing while a call is up.
    void dismiss();
    void hangUp();
    /// Hangs up, waits for the line to have done so, and has none from then on: for a process that ends under
    /// way.
    void giveUpLine() { line_.reset(); }
    /// One of "0123456789*#".
    void sendTone(QChar key);

    /// Does what is due by the clock. Called by a timer of its own.
    void tick();

  Q_SIGNALS:
    /// Any of the above answers differently than before.
    void changed();

  private:
    void enter(PhoneState state);
    void ended(const QString& reason);
    /// Offers what was opened during the call, or has nothing more to show.
    void goOn();
    /// Runs `work` on the main thread, if the present call is still the one then.
    void later(unsigned call, std::function<void()> work);
    LineEvents eventsOfThisCall();
    void setTimer(Clock::SteadyTime now);

    PhoneState state_ = PhoneState::idle;
    QString number_;
    QString reason_;
    QString notice_;
    QString tones_;
    QString next_;      ///< the number to offer when the call is over
    unsigned call_ = 0; ///< what an earlier call's line still says is dropped
    Clock::SteadyTime since_;
    std::optional<Clock::SteadyTime> hungUp_;
    QTimer timer_;
    /// The last member: it goes first, and with it the thread that brings events.
    std::unique_ptr<Line> line_;
};

} // namespace velto::phone
