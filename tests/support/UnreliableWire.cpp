// Two blocking sockets and a thread that carries bytes between them.
#include "tests/support/UnreliableWire.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>

namespace velto::test {
namespace {

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

FileDescriptor makeSocket() {
    return FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

void sendAtOnce(int socket) {
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

/// Closing the socket then sends a reset.
void resetOnClose(int socket) {
    const linger hard{1, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
}

} // namespace

UnreliableWire::UnreliableWire(std::uint16_t serverPort)
    : serverPort_(serverPort), listener_(makeSocket()), wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    auto address = loopback(0);
    socklen_t size = sizeof address;
    ::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), size);
    ::listen(listener_.get(), 8);
    ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
}

UnreliableWire::~UnreliableWire() {
    {
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
        for (const int socket : open_)
            if (socket >= 0)
                ::shutdown(socket, SHUT_RDWR);
    }
    ::shutdown(listener_.get(), SHUT_RDWR);
    release();
    thread_.join();
}

void UnreliableWire::hold() {
    isHeld_ = true;
    wake();
}

void UnreliableWire::release() {
    isHeld_ = false;
    wake();
}

void UnreliableWire::wake() {
    ::eventfd_write(wake_.get(), 1);
}

void UnreliableWire::run() {
    for (;;) {
        const FileDescriptor client(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        const auto address = loopback(serverPort_);
        const auto server = makeSocket();
        if (!client ||
            ::connect(server.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            return;
        sendAtOnce(client.get());
        sendAtOnce(server.get());
        {
            const std::lock_guard lock(mutex_);
            if (hasEnded_)
                return;
            open_ = {client.get(), server.get()};
        }
        carry(client.get(), server.get());
        const std::lock_guard lock(mutex_);
        open_ = {-1, -1};
    }
}

void UnreliableWire::carry(int client, int server) {
    for (;;) {
        const bool isHeld = isHeld_;
        pollfd ready[] = {{wake_.get(), POLLIN, 0}, {client, POLLIN, 0}, {server, POLLIN, 0}};
        ::poll(ready, isHeld ? 1 : 3, -1);
        eventfd_t ignored = 0;
        ::eventfd_read(wake_.get(), &ignored);
        if (isHeld || isHeld_)
            continue;
        if ((ready[1].revents != 0 && !passToServer(client, server)) ||
            (ready[2].revents != 0 && !passToClient(client, server)))
            return;
    }
}

bool UnreliableWire::passToServer(int client, int server) {
    char bytes[4096];
    const auto count = ::recv(client, bytes, sizeof bytes, 0);
    return count > 0 && write(server, {bytes, static_cast<std::size_t>(count)});
}

bool UnreliableWire::passToClient(int client, int server) {
    char bytes[4096];
    const std::ptrdiff_t left = untilReset_;
    const auto room = left < 0 ? sizeof bytes : std::min(sizeof bytes, static_cast<std::size_t>(left));
    const auto count = room > 0 ? ::recv(server, bytes, room, 0) : 0;
    if (left >= 0 && count >= left) {
        resetOnClose(client);
        resetOnClose(server);
    }
    if (count <= 0 || !write(client, {bytes, static_cast<std::size_t>(count)}))
        return false;
    if (left >= 0)
        untilReset_ = left - count;
    return left < 0 || count < left;
}

bool UnreliableWire::write(int to, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto sent = ::send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

} // namespace velto::test
