// The sound devices as the windows show them, and the choice of the default ones.
#pragma once

#include "VeltoApp/state/AudioState.h"
#include "VeltoApp/views/models/Mirror.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velto {

/// Main thread. The sound server is asked off it.
class AudioModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(QString status READ status NOTIFY statusChanged)
    Q_PROPERTY(bool bridgeInstalled READ bridgeInstalled NOTIFY bridgeInstalledChanged)
    Q_PROPERTY(QStringList inputDevices READ inputDevices NOTIFY inputDevicesChanged)
    Q_PROPERTY(QStringList outputDevices READ outputDevices NOTIFY outputDevicesChanged)
    /// Outputs on which a person may listen: none of the bridge's own.
    Q_PROPERTY(QStringList monitorDevices READ monitorDevices NOTIFY outputDevicesChanged)
    Q_PROPERTY(QString currentInput READ currentInput NOTIFY currentInputChanged)
    Q_PROPERTY(QString currentOutput READ currentOutput NOTIFY currentOutputChanged)
    Q_PROPERTY(QString wantInput READ wantInput CONSTANT)
    Q_PROPERTY(QString wantOutput READ wantOutput CONSTANT)
    Q_PROPERTY(QString agentMic READ agentMic CONSTANT)
    Q_PROPERTY(QString agentFeed READ agentFeed CONSTANT)

  public:
    explicit AudioModel(std::shared_ptr<AudioState> audio, QObject* parent = nullptr);

    QString status() const { return shown(status_()); }
    bool bridgeInstalled() const { return bridgeInstalled_(); }
    QStringList inputDevices() const { return shown(inputDevices_()); }
    QStringList outputDevices() const { return shown(outputDevices_()); }
    QStringList monitorDevices() const;
    QString currentInput() const { return shown(currentInput_()); }
    QString currentOutput() const { return shown(currentOutput_()); }
    static QString wantInput() { return shown(AudioState::wantInput); }
    static QString wantOutput() { return shown(AudioState::wantOutput); }
    static QString agentMic() { return shown(AudioState::agentMic); }
    static QString agentFeed() { return shown(AudioState::agentFeed); }

    Q_INVOKABLE void refresh();
    /// Each makes devices the system's defaults, those that exist, and looks again.
    Q_INVOKABLE void chooseInput(const QString& name);
    Q_INVOKABLE void chooseOutput(const QString& name);
    Q_INVOKABLE void setBridgeDefaults();

  Q_SIGNALS:
    void statusChanged();
    void bridgeInstalledChanged();
    void inputDevicesChanged();
    void outputDevicesChanged();
    void currentInputChanged();
    void currentOutputChanged();

  private:
    /// An empty name leaves that default as it is.
    void choose(std::string input, std::string output);

    std::shared_ptr<AudioState> audio_;
    Mirror<std::string> status_;
    Mirror<bool> bridgeInstalled_;
    Mirror<std::vector<std::string>> inputDevices_;
    Mirror<std::vector<std::string>> outputDevices_;
    Mirror<std::string> currentInput_;
    Mirror<std::string> currentOutput_;
};

} // namespace velto
