// One phone for each user: later launches hand over to the first.
#pragma once

#include <QByteArray>
#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

#include <chrono>
#include <optional>

namespace velto::phone {

/// What a launch wants: a number, or with none the window. Numbers may be any text.
using Wish = std::optional<QString>;

/// A lock and a stream socket in one folder, the user's runtime folder in programs. Qt's main thread.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    enum class Role {
        first,      ///< this process is the phone; it is to call `listen`
        handedOver, ///< another is, and has taken the wish
        failed,     ///< another is, and did not take it in time; or the folder cannot be used
    };

    explicit SingleInstance(const QString& folder);
    ~SingleInstance() override;

    /// Needs a QCoreApplication of whatever kind. Blocks for at most `limit`.
    Role settle(const Wish& wish, std::chrono::milliseconds limit = std::chrono::seconds(2));
    /// Needs an event loop. False when the socket cannot be made.
    bool listen();
    /// Before this process ends: what comes from then on is refused, so that its sender asks again.
    void close();
    /// The reason of what failed last.
    const QString& error() const { return error_; }

  Q_SIGNALS:
    void wished(const velto::phone::Wish& wish);

  private:
    bool handOver(const Wish& wish, std::chrono::milliseconds limit);
    void serve(QLocalSocket* peer);

    QString socketPath_;
    QLockFile lock_;
    QLocalServer server_;
    QString error_;
};

} // namespace velto::phone
