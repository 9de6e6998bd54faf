#include "VeltoPhone/app/PhoneProgram.h"

#include <QCoreApplication>

#include <cstdlib>
#include <utility>

namespace velto::phone {
namespace {

Phone* phoneOfProcess = nullptr;

void hangUpAtExit() {
    if (phoneOfProcess != nullptr)
        phoneOfProcess->giveUpLine();
}

} // namespace

PhoneProgram::PhoneProgram(std::unique_ptr<Line> line) : phone_(std::move(line)), banner_(phone_) {
    phoneOfProcess = &phone_;
    std::atexit(hangUpAtExit);
    // Queued: what follows a change may still open something.
    connect(&phone_, &Phone::changed, this, &PhoneProgram::endIfDone, Qt::QueuedConnection);
    connect(&banner_, &Banner::keypadWanted, this, &PhoneProgram::showWindow);
}

PhoneProgram::~PhoneProgram() {
    phoneOfProcess = nullptr;
}

void PhoneProgram::grant(const Wish& wish) {
    if (wish)
        phone_.open(*wish);
    else
        showWindow();
}

void PhoneProgram::showWindow() {
    if (!window_) {
        window_ = std::make_unique<MainWindow>(phone_);
        connect(window_.get(), &MainWindow::hidden, this, &PhoneProgram::endIfDone, Qt::QueuedConnection);
    }
    window_->present();
}

void PhoneProgram::stop() {
    if (std::exchange(stopping_, true))
        return end();
    phone_.hangUp();
    endIfDone();
}

void PhoneProgram::endIfDone() {
    const bool visible = phone_.state() != PhoneState::idle || (window_ && window_->isVisible());
    if (!phone_.callUp() && (stopping_ || !visible))
        end();
}

void PhoneProgram::end() {
    Q_EMIT ending();
    // Without asking the windows, of which the banner refuses while a call is up.
    QCoreApplication::exit();
}

} // namespace velto::phone
