#include "VeltoApp/views/models/SettingsModel.h"

#include "VeltoPlatform/LoginItem.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoShared/voice/VoiceProvider.h"

namespace velto {
namespace {

QStringList voiceNames(VoiceProvider provider) {
    QStringList names;
    for (const auto voice : voices(provider))
        names.append(shown(voice));
    return names;
}

/// On `Blocking`: home folders may be on other computers.
asio::awaitable<std::string> becomeLoginItem(bool launch) {
    auto* const item = platform().loginItem;
    co_return launch ? item->registerApplication() : item->unregisterApplication();
}

} // namespace

SettingsModel::SettingsModel(AppSettings& settings, QObject* parent)
    : QObject(parent), settings_(settings),
      defaultGoal_(settings.defaultGoal, [this] { defaultGoalChanged(); }),
      recordCalls_(settings.recordCalls, [this] { recordCallsChanged(); }),
      launchAtLogin_(settings.launchAtLogin, [this] { launchAtLoginChanged(); }),
      showDebug_(settings.showDebug, [this] { showDebugChanged(); }),
      provider_(settings.provider, [this] { providerChanged(); }),
      geminiVoice_(settings.geminiVoice, [this] { geminiVoiceChanged(); }),
      openaiVoice_(settings.openaiVoice, [this] { openaiVoiceChanged(); }),
      monitorAgent_(settings.monitorAgent, [this] { monitorAgentChanged(); }),
      monitorDevice_(settings.monitorDevice, [this] { monitorDeviceChanged(); }) {}

void SettingsModel::changeLaunchAtLogin(bool launch) {
    if (!std::exchange(isChangingLoginItem_, true))
        MainThread::spawn(applyLaunchAtLogin(this, launch));
}

asio::awaitable<void> SettingsModel::applyLaunchAtLogin(QPointer<SettingsModel> self, bool launch) {
    const auto error = co_await Blocking::run(becomeLoginItem(launch));
    if (!self)
        co_return;
    self->isChangingLoginItem_ = false;
    self->loginItemError_ = error.empty() ? "" : "Could not update login item: " + shown(error);
    if (error.empty())
        self->settings_.launchAtLogin.set(launch);
    self->loginItemErrorChanged();
}

QStringList SettingsModel::geminiVoices() {
    return voiceNames(VoiceProvider::gemini);
}

QStringList SettingsModel::openaiVoices() {
    return voiceNames(VoiceProvider::openai);
}

} // namespace velto
