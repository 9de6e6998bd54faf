#include "VeltoApp/views/models/ReadinessModel.h"

#include "VeltoApp/admin/HelperRun.h"
#include "VeltoPlatform/Accessibility.h"
#include "VeltoPlatform/MicrophoneAccess.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Workspace.h"
#include "VeltoShared/telephony/AX.h"

namespace velto {
namespace {

/// Whether the desktop has a page of settings to show.
asio::awaitable<bool> openSettings() {
    const auto page = platform().workspace->accessibilitySettings();
    co_return page&& Helper::run(page->program, page->arguments).status == 0;
}

asio::awaitable<std::string> microphoneReason() {
    co_return platform().microphoneAccess->status().reason;
}

} // namespace

ReadinessModel::ReadinessModel(std::shared_ptr<ReadinessState> readiness, QObject* parent)
    : QObject(parent), readiness_(std::move(readiness)), axReady_(readiness_->axReady,
                                                                  [this] {
                                                                      axReadyChanged();
                                                                      axTroubleChanged();
                                                                      readyChanged();
                                                                  }),
      micReady_(readiness_->micReady,
                [this] {
                    micReadyChanged();
                    micTroubleChanged();
                    readyChanged();
                }),
      driverReady_(readiness_->driverReady, [this] {
          driverReadyChanged();
          readyChanged();
      }) {}

void ReadinessModel::refresh() {
    readiness_->refresh();
}

void ReadinessModel::requestMic() {
    readiness_->requestMic();
    MainThread::spawn(explainMicrophone(this));
}

asio::awaitable<void> ReadinessModel::explainMicrophone(QPointer<ReadinessModel> self) {
    const auto reason = co_await Blocking::run(microphoneReason());
    if (!self)
        co_return;
    self->micTrouble_ = shown(reason);
    self->micTroubleChanged();
}

void ReadinessModel::enableAccessibility() {
    if (!readiness_->didPromptAX) {
        readiness_->didPromptAX = true;
        AX::promptForTrust();
    }
    MainThread::spawn(showSettings(this));
}

asio::awaitable<void> ReadinessModel::showSettings(QPointer<ReadinessModel> self) {
    const bool isShown = co_await Blocking::run(openSettings());
    if (!self)
        co_return;
    self->refresh();
    self->axTrouble_ = isShown ? QString() : shown(platform().accessibility->whyNotTrusted());
    self->axTroubleChanged();
}

} // namespace velto
