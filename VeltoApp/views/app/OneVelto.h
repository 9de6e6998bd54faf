// One Velto for each user's desktop: a later launch brings the windows of the first to the front.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

namespace velto {

/// Owns the program's name on the session bus and answers there as a desktop expects of an application
/// (org.freedesktop.Application). Qt's main thread.
class OneVelto : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    enum class Role {
        first,  ///< this process is to show the windows
        shown,  ///< another does, and has been told
        silent, ///< another does, and did not answer within some seconds
        noBus,  ///< no session bus: nobody can tell
    };

    /// Once.
    Role settle();

  public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the interface's names.
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
    // NOLINTEND(readability-identifier-naming)

  Q_SIGNALS:
    /// The windows are to come to the front.
    void wanted();
};

} // namespace velto
