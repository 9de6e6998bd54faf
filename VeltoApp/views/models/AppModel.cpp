#include "VeltoApp/views/models/AppModel.h"

#include "VeltoApp/app/VeltoApp.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Preferences.h"
#include "VeltoShared/audio/AudioBridge.h"

namespace velto {
namespace {

constexpr std::size_t kRecents = 20;
constexpr const char* kSettingsTab = "velto.settingsTab";
constexpr const char* kReadiness = "readiness";

} // namespace

AppModel::AppModel(const VeltoApp& app)
    : agent_(app.agent), audio_(app.audio), drivers_(app.drivers),
      geminiKey_(app.agent, VoiceProvider::gemini), history_(app.history),
      openaiKey_(app.agent, VoiceProvider::openai), readiness_(app.setup), recents_(app.history, kRecents),
      recordings_(app.rec), session_(app.nativeSession), sessionLog_(app.nativeSession),
      settings_(app.settings), stored_(app.settings),
      settingsTab_(shown(platform().preferences->text(kSettingsTab).value_or(kReadiness))) {}

void AppModel::setSettingsTab(const QString& tab) {
    if (tab == settingsTab_)
        return;
    settingsTab_ = tab;
    platform().preferences->set(kSettingsTab, tab.toStdString());
    Q_EMIT settingsTabChanged();
}

void AppModel::mainWindowShown() {
    if (!session_.running())
        AudioBridge::restoreIfNeeded();
    audio_.refresh();
    readiness_.refresh();
    if (readiness_.ready() || stored_.hasCompletedSetup())
        return;
    stored_.hasCompletedSetup.set(true);
    setSettingsTab(QString::fromLatin1(kReadiness));
    Q_EMIT setupWanted();
}

void AppModel::mainWindowActivated() {
    readiness_.refresh();
}

} // namespace velto
