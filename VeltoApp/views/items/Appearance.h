// Light or dark windows.
#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

class QQmlEngine;

namespace velto {

/// Qt's main thread.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark WRITE setDark NOTIFY darkChanged)

  public:
    /// Of all windows of the engine, of which one has been loaded.
    static Appearance& of(QQmlEngine& engine);

    bool dark() const { return dark_; }
    void setDark(bool dark);

  Q_SIGNALS:
    void darkChanged();

  private:
    bool dark_ = false;
};

} // namespace velto
