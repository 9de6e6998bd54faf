// The user's settings as the windows show and change them.
#pragma once

#include "VeltoApp/views/models/Mirror.h"
#include "VeltoShared/core/AppSettings.h"
#include "VeltoShared/core/Executors.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <string>

namespace velto {

/// Main thread. A property that is written is stored.
class SettingsModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(QString defaultGoal READ defaultGoal WRITE setDefaultGoal NOTIFY defaultGoalChanged)
    Q_PROPERTY(bool recordCalls READ recordCalls WRITE setRecordCalls NOTIFY recordCallsChanged)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin NOTIFY launchAtLoginChanged)
    /// Why the login item is not as asked for; empty: it is.
    Q_PROPERTY(QString loginItemError READ loginItemError NOTIFY loginItemErrorChanged)
    Q_PROPERTY(bool showDebug READ showDebug WRITE setShowDebug NOTIFY showDebugChanged)
    Q_PROPERTY(QString provider READ provider WRITE setProvider NOTIFY providerChanged)
    Q_PROPERTY(QString geminiVoice READ geminiVoice WRITE setGeminiVoice NOTIFY geminiVoiceChanged)
    Q_PROPERTY(QString openaiVoice READ openaiVoice WRITE setOpenaiVoice NOTIFY openaiVoiceChanged)
    Q_PROPERTY(QStringList geminiVoices READ geminiVoices CONSTANT)
    Q_PROPERTY(QStringList openaiVoices READ openaiVoices CONSTANT)
    Q_PROPERTY(bool monitorAgent READ monitorAgent WRITE setMonitorAgent NOTIFY monitorAgentChanged)
    Q_PROPERTY(QString monitorDevice READ monitorDevice WRITE setMonitorDevice NOTIFY monitorDeviceChanged)

  public:
    explicit SettingsModel(AppSettings& settings, QObject* parent = nullptr);

    QString defaultGoal() const { return shown(defaultGoal_()); }
    void setDefaultGoal(const QString& goal) { settings_.defaultGoal.set(goal.toStdString()); }
    bool recordCalls() const { return recordCalls_(); }
    void setRecordCalls(bool record) { settings_.recordCalls.set(record); }
    bool launchAtLogin() const { return launchAtLogin_(); }
    /// Registers or unregisters the login item; the setting follows when that is done. Nothing while an
    /// earlier change is under way.
    Q_INVOKABLE void changeLaunchAtLogin(bool launch);
    QString loginItemError() const { return loginItemError_; }
    bool showDebug() const { return showDebug_(); }
    void setShowDebug(bool show) { settings_.showDebug.set(show); }
    QString provider() const { return shown(provider_()); }
    void setProvider(const QString& provider) { settings_.provider.set(provider.toStdString()); }
    QString geminiVoice() const { return shown(geminiVoice_()); }
    void setGeminiVoice(const QString& voice) { settings_.geminiVoice.set(voice.toStdString()); }
    QString openaiVoice() const { return shown(openaiVoice_()); }
    void setOpenaiVoice(const QString& voice) { settings_.openaiVoice.set(voice.toStdString()); }
    static QStringList geminiVoices();
    static QStringList openaiVoices();
    bool monitorAgent() const { return monitorAgent_(); }
    void setMonitorAgent(bool monitor) { settings_.monitorAgent.set(monitor); }
    QString monitorDevice() const { return shown(monitorDevice_()); }
    void setMonitorDevice(const QString& device) { settings_.monitorDevice.set(device.toStdString()); }

  Q_SIGNALS:
    void defaultGoalChanged();
    void recordCallsChanged();
    void launchAtLoginChanged();
    void loginItemErrorChanged();
    void showDebugChanged();
    void providerChanged();
    void geminiVoiceChanged();
    void openaiVoiceChanged();
    void monitorAgentChanged();
    void monitorDeviceChanged();

  private:
    static asio::awaitable<void> applyLaunchAtLogin(QPointer<SettingsModel> self, bool launch);

    AppSettings& settings_;
    Mirror<std::string> defaultGoal_;
    Mirror<bool> recordCalls_;
    Mirror<bool> launchAtLogin_;
    Mirror<bool> showDebug_;
    Mirror<std::string> provider_;
    Mirror<std::string> geminiVoice_;
    Mirror<std::string> openaiVoice_;
    Mirror<bool> monitorAgent_;
    Mirror<std::string> monitorDevice_;
    QString loginItemError_;
    bool isChangingLoginItem_ = false;
};

} // namespace velto
