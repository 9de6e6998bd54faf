// Over the socket goes one line each way: "show", or "open " and the number percent-encoded; and "ok".
#include "VeltoPhone/app/SingleInstance.h"

#include "VeltoShared/core/Clock.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QLocalSocket>
#include <QTimer>

#include <utility>

#include <poll.h>

namespace velto::phone {
namespace {

using namespace std::chrono_literals;

constexpr auto kBetweenTries = 20ms;
constexpr auto kPeerMayTake = 2s;
/// Longer than any number; what is cut off makes none of it.
constexpr qsizetype kMostHandedOver = 4096;
constexpr qint64 kLongestLine = 65536;

QByteArray lineOf(const Wish& wish) {
    return wish ? "open " + wish->left(kMostHandedOver).toUtf8().toPercentEncoding() + '\n' : "show\n";
}

/// A process that stood still finds what was sent to it meanwhile, also by those who have given up since.
bool stillWaits(const QLocalSocket& peer) {
    pollfd connection{static_cast<int>(peer.socketDescriptor()), POLLRDHUP, 0};
    return ::poll(&connection, 1, 0) == 0;
}

int remaining(const QDeadlineTimer& deadline) {
    return static_cast<int>(deadline.remainingTime());
}

} // namespace

SingleInstance::SingleInstance(const QString& folder)
    : socketPath_(folder + QStringLiteral("/velto-phone.sock")),
      lock_(folder + QStringLiteral("/velto-phone.lock")) {
    // A lock is stale when its process is gone, however old.
    lock_.setStaleLockTime(0);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        while (auto* const peer = server_.nextPendingConnection())
            serve(peer);
    });
}

SingleInstance::~SingleInstance() {
    // Before the lock is given up, so that nobody finds a socket without its owner.
    close();
}

SingleInstance::Role SingleInstance::settle(const Wish& wish, std::chrono::milliseconds limit) {
    const QDeadlineTimer deadline(limit);
    do {
        // Again in each round: the other one may just be starting, or about to end.
        if (lock_.tryLock(0))
            return Role::first;
        if (lock_.error() != QLockFile::LockFailedError) {
            error_ = tr("cannot lock %1").arg(lock_.fileName());
            return Role::failed;
        }
        if (handOver(wish, std::chrono::milliseconds(deadline.remainingTime())))
            return Role::handedOver;
        Clock::shared().blockFor(kBetweenTries);
    } while (!deadline.hasExpired());
    error_ = tr("the running phone does not answer");
    return Role::failed;
}

bool SingleInstance::handOver(const Wish& wish, std::chrono::milliseconds limit) {
    const QDeadlineTimer deadline(limit);
    QLocalSocket socket;
    socket.connectToServer(socketPath_);
    if (!socket.waitForConnected(remaining(deadline)))
        return false;
    socket.write(lineOf(wish));
    while (!socket.canReadLine())
        if (!socket.waitForReadyRead(remaining(deadline)))
            return false;
    return socket.readLine() == "ok\n";
}

bool SingleInstance::listen() {
    // The lock is ours, so whoever left a socket behind is gone.
    QLocalServer::removeServer(socketPath_);
    if (server_.listen(socketPath_) &&
        QFile::setPermissions(socketPath_, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return true;
    error_ = tr("cannot listen at %1: %2").arg(socketPath_, server_.errorString());
    return false;
}

void SingleInstance::close() {
    server_.close();
}

void SingleInstance::serve(QLocalSocket* peer) {
    connect(peer, &QLocalSocket::disconnected, peer, &QObject::deleteLater);
    QTimer::singleShot(kPeerMayTake, peer, [peer] { peer->abort(); });
    peer->setReadBufferSize(kLongestLine);
    const auto read = [this, peer] {
        if (!peer->canReadLine())
            return;
        const auto line = peer->readLine().chopped(1);
        const bool open = line.startsWith("open ");
        if ((!open && line != "show") || !server_.isListening() || !stillWaits(*peer))
            return peer->abort();
        // Granted first: whoever reads the answer may look at the screen at once.
        Q_EMIT wished(open ? Wish(QString::fromUtf8(QByteArray::fromPercentEncoding(line.mid(5))))
                           : std::nullopt);
        peer->write("ok\n");
        peer->disconnectFromServer();
    };
    connect(peer, &QLocalSocket::readyRead, this, read);
    read();
}

} // namespace velto::phone
