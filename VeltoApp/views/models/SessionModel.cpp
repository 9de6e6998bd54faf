#include "VeltoApp/views/models/SessionModel.h"

#include "VeltoApp/views/models/TimeTexts.h"

namespace velto {

using namespace std::chrono_literals;

SessionModel::SessionModel(std::shared_ptr<NativeCallSession> session, QObject* parent)
    : QObject(parent), session_(std::move(session)), state_(session_->state, [this] { stateChanged(); }),
      running_(session_->running,
               [this] {
                   timeRunning();
                   runningChanged();
               }),
      number_(session_->number, [this] { numberChanged(); }),
      audioStats_(session_->audioStats, [this] { audioStatsChanged(); }),
      failure_(session_->failure, [this] { troubleChanged(); }),
      // The session tells before it changes, and of every line and figure.
      look_([this] { transcript_.setLines(session_->liveTranscript()); }),
      anyChange_(session_->observe([this] { look_.ask(); })) {
    if (running_())
        timeRunning();
    transcript_.setLines(session_->liveTranscript());
}

void SessionModel::setNumber(const QString& number) {
    session_->number.set(number.toStdString());
}

void SessionModel::start(const QString& goal, bool dial) {
    session_->start(goal.toStdString(), dial);
}

void SessionModel::redial(const QString& number, const QString& goal) {
    if (running())
        return;
    setNumber(number);
    start(goal, true);
}

void SessionModel::stop() {
    session_->stop();
}

void SessionModel::timeRunning() {
    seenAt_ = Clock::shared().steadyNow();
    if (running_()) {
        startedAt_ = seenAt_;
        second_ = Clock::shared().repeat(1s, [this] {
            seenAt_ = Clock::shared().steadyNow();
            Q_EMIT runningTimeChanged();
        });
    } else {
        second_ = nullptr;
    }
    Q_EMIT runningTimeChanged();
}

QString SessionModel::runningTime() const {
    return startedAt_ ? runningTimeText(seenAt_ - *startedAt_) : QString();
}

} // namespace velto
