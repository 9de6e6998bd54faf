#include "VeltoShared/core/AppSettings.h"

#include "VeltoPlatform/Platform.h"

namespace velto {
namespace {

Setting<std::string> text(AppSettings& owner, Preferences& store, const char* key, const char* fallback) {
    return {owner, store, key, store.text(key).value_or(fallback)};
}

Setting<bool> falseByDefault(AppSettings& owner, Preferences& store, const char* key) {
    return {owner, store, key, store.boolean(key)};
}

/// Only a stored Boolean counts, so that a stored false survives while everything else means true.
Setting<bool> trueByDefault(AppSettings& owner, Preferences& store, const char* key) {
    const auto stored = store.object(key);
    const bool* flag = stored ? std::get_if<bool>(&*stored) : nullptr;
    return {owner, store, key, flag ? *flag : true};
}

} // namespace

AppSettings& AppSettings::shared() {
    static AppSettings settings(*platform().preferences);
    return settings;
}

AppSettings::AppSettings(Preferences& defaults)
    : defaults_(defaults), defaultGoal(text(*this, defaults_, "defaultGoal", sampleGoal)),
      launchAtLogin(falseByDefault(*this, defaults_, "launchAtLogin")),
      recordCalls(falseByDefault(*this, defaults_, "recordCalls")),
      showDebug(trueByDefault(*this, defaults_, "showDebug")),
      hasCompletedSetup(falseByDefault(*this, defaults_, "hasCompletedSetup")),
      provider(text(*this, defaults_, "provider", "")),
      geminiVoice(text(*this, defaults_, "geminiVoice", "Puck")),
      openaiVoice(text(*this, defaults_, "openaiVoice", "alloy")),
      monitorAgent(falseByDefault(*this, defaults_, "monitorAgent")),
      monitorDevice(text(*this, defaults_, "monitorDevice", "")),
      routeSystemAudio(trueByDefault(*this, defaults_, "routeSystemAudio")),
      restoreDevices(trueByDefault(*this, defaults_, "restoreDevices")),
      useProcessTap(falseByDefault(*this, defaults_, "useProcessTap")),
      muteCallLocally(falseByDefault(*this, defaults_, "muteCallLocally")) {}

} // namespace velto
