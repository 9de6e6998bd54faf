// The machine that a rehearsal plays on.
#include "rehearsal/director/PrivateSession.h"

#include "VeltoPlatform/linux/PulseServer.h"
#include "rehearsal/PhoneRegistration.h"
#include "rehearsal/director/Surroundings.h"

namespace velto::rehearsal {
Result<std::unique_ptr<PrivateSession>> PrivateSession::start(const PrivateSessionPlan& plan, Stage& stage) {
    std::unique_ptr<PrivateSession> session(new PrivateSession(stage));
    if (auto started = session->startSound(plan); !started)
        return started.error();
    if (auto started = session->startDesktop(plan); !started)
        return started.error();
    return session;
}

PrivateSession::~PrivateSession() {
    for (const auto pid : watched_)
        stage_.unwatch(pid);
}

void PrivateSession::watch(const std::string& title, pid_t pid) {
    stage_.watch(title, pid);
    watched_.insert(pid);
}

void PrivateSession::unwatch(pid_t pid) {
    stage_.unwatch(pid);
    watched_.erase(pid);
}

void PrivateSession::watchSound() {
    for (const auto& process : sound_->processes())
        watch(process.title(), process.pid());
}

Result<> PrivateSession::startSound(const PrivateSessionPlan& plan) {
    auto started = PrivateSoundServer::start(plan.folder / "sound", plan.sound);
    if (!started)
        return started.error();
    sound_ = std::move(*started);
    watchSound();
    return {};
}

Result<> PrivateSession::startDesktop(const PrivateSessionPlan& plan) {
    auto started = PrivateDesktop::start(plan.folder / "desktop", plan.folders,
                                         {.accessibility = true, .display = true, .keyring = true});
    if (!started)
        return started.error();
    desktop_ = std::move(*started);
    for (const auto* process :
         {&desktop_->bus(), &desktop_->accessibility(), &desktop_->keyring(), &desktop_->displayServer()})
        watch((*process)->title(), (*process)->pid());
    environment_ = desktop_->environment();
    environment_.merge(sound_->clientEnvironment());
    Surroundings::enter(environment_);
    hardware_ = std::make_unique<PulseHardware>(std::make_shared<PulseServer>([](const std::string&) {}));
    phoneEnvironment_ = plan.display;
    phoneEnvironment_.merge(Environment{{"DISPLAY", desktop_->display()},
                                        {"VELTO_PHONE_LINE", "rehearsal:" + plan.scenario.string()},
                                        {"VELTO_REHEARSAL_REPORTS", plan.reports}});
    return registerPhone({plan.phone, phoneEnvironment_}, plan.folders);
}

DefaultDevices PrivateSession::defaultDevices() {
    const auto nameOf = [&](AudioDirection direction) {
        const auto device = hardware_->defaultDevice(direction);
        return device && *device != 0 ? hardware_->deviceName(*device).value_or("") : std::string();
    };
    return {nameOf(AudioDirection::input), nameOf(AudioDirection::output)};
}

Result<> PrivateSession::restartSound() {
    for (const auto& process : sound_->processes())
        unwatch(process.pid());
    sound_->kill();
    auto restarted = sound_->restart();
    if (restarted)
        watchSound();
    return restarted;
}

bool PrivateSession::killKeyring() {
    auto& keyring = desktop_->keyring();
    if (!keyring)
        return false;
    unwatch(keyring->pid());
    keyring->kill();
    return true;
}

} // namespace velto::rehearsal
