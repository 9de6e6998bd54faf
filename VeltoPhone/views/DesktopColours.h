// Light or dark, as the desktop says, where Qt does not know the desktop's own palette.
#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QPalette>

namespace velto::phone {

/// Asks the settings portal and follows its changes; without a session bus or a portal the palette stays. So
/// it does where the desktop's theme is dark by itself. Qt's main thread; nothing waits for the answer.
class DesktopColours : public QObject {
    Q_OBJECT

  public:
    DesktopColours();

  private Q_SLOTS:
    void settingChanged(const QDBusMessage& signal);

  private:
    void apply(const QVariant& scheme);

    QPalette own_;
};

} // namespace velto::phone
