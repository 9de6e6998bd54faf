#include "VeltoApp/state/ReadinessState.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoApp/drivers/DriverState.h"
#include "VeltoPlatform/Accessibility.h"
#include "VeltoPlatform/MicrophoneAccess.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/telephony/AX.h"

#include <algorithm>
#include <string_view>

namespace velto {
namespace {

void update(Published<bool>& field, bool is) {
    if (field() != is)
        field.set(is);
}

asio::awaitable<bool> bridgeInstalled() {
    co_return AudioBridge::installed();
}

} // namespace

const std::shared_ptr<ReadinessState>& ReadinessState::shared() {
    static const auto state = std::make_shared<ReadinessState>(DriverState::installedOnDisk);
    return state;
}

ReadinessState::ReadinessState(InstalledOnDisk installedOnDisk)
    : installedOnDisk_(std::move(installedOnDisk)), accessibility_("readiness: accessibility", Helper::log),
      microphone_("readiness: microphone", Helper::log), driver_("readiness: audio driver", Helper::log) {}

void ReadinessState::refresh() {
    ++lastLook_;
    update(axReady, AX::trusted());
    accessibility_.tell(axReady() ? "" : platform().accessibility->whyNotTrusted());

    const auto microphone = platform().microphoneAccess->status();
    update(micReady, microphone.authorization == MicrophoneAuthorization::authorized);
    microphone_.tell(microphone.reason);

    lookForDriver();
}

void ReadinessState::lookForDriver() {
    const auto installed = installedOnDisk_();
    std::string missing;
    for (const std::string_view driver : {"VeltoLoop", "VeltoVoice"})
        if (std::ranges::none_of(installed, [&](const auto& name) { return name.starts_with(driver); }))
            missing.append(missing.empty() ? "" : " and ").append(driver);
    update(driverReady, missing.empty());
    if (!missing.empty())
        driver_.tell("not installed: " + missing);
    else
        MainThread::spawn(reportDevices(weak_from_this(), lastLook_));
}

/// Installed is not the same as there: the sound server reads drivers when it starts.
asio::awaitable<void> ReadinessState::reportDevices(std::weak_ptr<ReadinessState> weak,
                                                    std::uint64_t number) {
    const bool arePublished = co_await Blocking::run(bridgeInstalled());
    if (const auto self = weak.lock(); self && self->lastLook_ == number)
        self->driver_.tell(arePublished ? ""
                                        : "installed, but the sound server does not show the devices; it may "
                                          "have to be restarted");
}

void ReadinessState::requestMic() {
    platform().microphoneAccess->request([weak = weak_from_this()] {
        MainThread::post([weak] {
            if (const auto self = weak.lock())
                self->refresh();
        });
    });
}

} // namespace velto
