// The states of a call.
#include "VeltoPhone/model/Phone.h"

#include "VeltoPhone/model/PhoneNumber.h"

#include <utility>

namespace velto::phone {
namespace {

using namespace std::chrono_literals;

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

} // namespace

Phone::Phone(std::unique_ptr<Line> line) : line_(std::move(line)) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &Phone::tick);
}

bool Phone::callUp() const {
    return state_ == PhoneState::dialing || state_ == PhoneState::ringing || state_ == PhoneState::active;
}

QString Phone::runningTime() const {
    const auto seconds = (Clock::shared().steadyNow() - since_) / 1s;
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

void Phone::open(const QString& given) {
    const auto number = phoneNumber(given.toStdString());
    if (callUp()) {
        if (number)
            next_ = text(*number);
        notice_ = number ? tr("%1 can be called when this call is over").arg(next_)
                         : text(number.error().description);
        Q_EMIT changed();
        return;
    }
    next_.clear();
    number_ = number ? text(*number) : QString();
    reason_ = number ? QString() : text(number.error().description);
    enter(number ? PhoneState::offered : PhoneState::refused);
}

void Phone::call() {
    if (state_ != PhoneState::offered || !hasLine())
        return;
    ++call_;
    enter(PhoneState::dialing);
    line_->dial(number_.toStdString(), eventsOfThisCall());
}

LineEvents Phone::eventsOfThisCall() {
    return {[this, call = call_] {
                later(call, [this] {
                    if (state_ == PhoneState::dialing)
                        enter(PhoneState::ringing);
                });
            },
            [this, call = call_] { later(call, [this] { enter(PhoneState::active); }); },
            [this, call = call_](const std::string& reason) {
                later(call, [this, reason] { ended(text(reason)); });
            }};
}

void Phone::later(unsigned call, std::function<void()> work) {
    QMetaObject::invokeMethod(
        this,
        [this, call, work = std::move(work)] {
            if (call == call_ && callUp())
                work();
        },
        Qt::QueuedConnection);
}

void Phone::ended(const QString& reason) {
    reason_ = reason;
    enter(PhoneState::ended);
}

void Phone::dismiss() {
    if (!callUp())
        goOn();
}

void Phone::goOn() {
    if (next_.isEmpty())
        enter(PhoneState::idle);
    else
        open(std::exchange(next_, {}));
}

void Phone::hangUp() {
    if (!callUp())
        return;
    line_->hangUp();
    if (!hungUp_)
        hungUp_ = Clock::shared().steadyNow();
    setTimer(Clock::shared().steadyNow());
    Q_EMIT changed();
}

void Phone::sendTone(QChar key) {
    if (state_ != PhoneState::active)
        return;
    line_->sendTones(QString(key).toStdString());
    tones_ += key;
    Q_EMIT changed();
}

void Phone::enter(PhoneState state) {
    state_ = state;
    since_ = Clock::shared().steadyNow();
    if (!callUp()) {
        hungUp_.reset();
        notice_.clear();
        tones_.clear();
    }
    if (state == PhoneState::idle) {
        number_.clear();
        reason_.clear();
    }
    setTimer(since_);
    Q_EMIT changed();
}

void Phone::tick() {
    const auto now = Clock::shared().steadyNow();
    if (hungUp_ && now - *hungUp_ >= lineMayTakeToEnd)
        return ended(tr("the phone line does not answer; the call may still be up"));
    if (state_ == PhoneState::ended && now - since_ >= shownAfterEnd)
        return goOn();
    setTimer(now);
    if (state_ == PhoneState::active)
        Q_EMIT changed();
}

void Phone::setTimer(Clock::SteadyTime now) {
    std::optional<Clock::SteadyTime> due;
    if (state_ == PhoneState::active)
        due = since_ + ((now - since_) / 1s + 1) * 1s;
    else if (state_ == PhoneState::ended)
        due = since_ + shownAfterEnd;
    if (hungUp_)
        due = due ? std::min(*due, *hungUp_ + lineMayTakeToEnd) : *hungUp_ + lineMayTakeToEnd;
    if (due)
        timer_.start(std::chrono::ceil<std::chrono::milliseconds>(*due - now));
    else
        timer_.stop();
}

} // namespace velto::phone
