// Two blocking sockets and a thread that carries bytes between them.
#include "tests/support/UnreliableWire.h"

#include <boost/asio/write.hpp>

#include <poll.h>

#include <limits>

namespace velto::test {

namespace asio = boost::asio;

namespace {

/// Carries what has arrived, at most so many bytes; answers how many, 0 when a side has gone.
std::size_t pass(asio::ip::tcp::socket& from, asio::ip::tcp::socket& to, std::size_t limit) {
    std::array<char, 4096> bytes{};
    boost::system::error_code error;
    const auto count = from.read_some(asio::buffer(bytes, limit), error);
    if (!error)
        asio::write(to, asio::buffer(bytes, count), error);
    return error ? 0 : count;
}

} // namespace

UnreliableWire::UnreliableWire(std::uint16_t serverPort)
    : serverPort_(serverPort), listener_(context_, {asio::ip::address_v4::loopback(), 0}) {
    thread_ = std::thread([this] { run(); });
}

UnreliableWire::~UnreliableWire() {
    {
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
        for (const int socket : open_)
            ::shutdown(socket, SHUT_RDWR);
    }
    ::shutdown(listener_.native_handle(), SHUT_RDWR);
    release();
    thread_.join();
}

void UnreliableWire::release() {
    isHeld_ = false;
    isHeld_.notify_all();
}

void UnreliableWire::run() {
    for (;;) {
        boost::system::error_code error;
        auto client = listener_.accept(error);
        Tcp::socket server(context_);
        if (!error)
            server.connect({asio::ip::address_v4::loopback(), serverPort_}, error);
        if (error)
            return;
        client.set_option(Tcp::no_delay(true));
        server.set_option(Tcp::no_delay(true));
        {
            const std::lock_guard lock(mutex_);
            if (hasEnded_)
                return;
            open_ = {client.native_handle(), server.native_handle()};
        }
        carry(client, server);
        const std::lock_guard lock(mutex_);
        open_ = {-1, -1};
    }
}

void UnreliableWire::carry(Tcp::socket& client, Tcp::socket& server) {
    for (;;) {
        pollfd ready[] = {{client.native_handle(), POLLIN, 0}, {server.native_handle(), POLLIN, 0}};
        ::poll(ready, 2, -1);
        isHeld_.wait(true);
        constexpr auto kAll = std::numeric_limits<std::size_t>::max();
        if (ready[0].revents != 0 && pass(client, server, kAll) == 0)
            return;
        if (ready[1].revents == 0)
            continue;
        const std::ptrdiff_t left = untilReset_;
        const auto count = pass(server, client, left < 0 ? kAll : static_cast<std::size_t>(left));
        if (left >= 0 && (untilReset_ -= static_cast<std::ptrdiff_t>(count)) == 0) {
            client.set_option(Tcp::socket::linger(true, 0));
            server.set_option(Tcp::socket::linger(true, 0));
            return;
        }
        if (count == 0)
            return;
    }
}

} // namespace velto::test
