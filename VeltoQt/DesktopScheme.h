// Light or dark, as the desktop's user prefers.
#pragma once

#include <QDBusMessage>
#include <QObject>

namespace velto {

/// Asks the settings portal and follows its changes; without a session bus or a portal there is no
/// preference. Qt's main thread; nothing waits for the answer.
class DesktopScheme : public QObject {
    Q_OBJECT

  public:
    DesktopScheme();

    bool prefersDark() const { return prefersDark_; }

  Q_SIGNALS:
    void changed();

  private Q_SLOTS:
    void settingChanged(const QDBusMessage& signal);

  private:
    void apply(const QVariant& scheme);

    bool prefersDark_ = false;
};

} // namespace velto
