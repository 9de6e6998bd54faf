// A bad network between a client and a server on this computer: it holds and cuts.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>

#include <poll.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <mutex>
#include <string>
#include <thread>

namespace velto::test {

/// Listens on 127.0.0.1 and carries the bytes of one TCP connection at a time to a port of this computer and
/// back, on a thread of its own. The settings: any thread, at any time.
class UnreliableWire {
    using Tcp = boost::asio::ip::tcp;

  public:
    explicit UnreliableWire(std::uint16_t serverPort)
        : server_(boost::asio::ip::address_v4::loopback(), serverPort),
          listener_(context_, Tcp::endpoint(server_.address(), 0)) {
        thread_ = std::thread([this] { run(); });
    }
    ~UnreliableWire() {
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
    UnreliableWire(const UnreliableWire&) = delete;
    UnreliableWire& operator=(const UnreliableWire&) = delete;

    /// "localhost:port".
    std::string host() const { return "localhost:" + std::to_string(listener_.local_endpoint().port()); }

    /// Nothing gets through, in either direction, until `release`; the connection stays open.
    void hold() { isHeld_ = true; }
    void release() {
        isHeld_ = false;
        isHeld_.notify_all();
    }
    /// Lets so many more bytes through to the client, then resets both connections.
    void resetAfter(std::size_t bytes) { untilReset_ = static_cast<std::ptrdiff_t>(bytes); }

  private:
    void run() {
        for (;;) {
            boost::system::error_code error;
            auto client = listener_.accept(error);
            Tcp::socket server(context_);
            if (!error)
                server.connect(server_, error);
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
    /// Until either side has gone.
    void carry(Tcp::socket& client, Tcp::socket& server) {
        constexpr auto kAll = std::numeric_limits<std::size_t>::max();
        for (;;) {
            pollfd ready[] = {{client.native_handle(), POLLIN, 0}, {server.native_handle(), POLLIN, 0}};
            ::poll(ready, 2, -1);
            isHeld_.wait(true);
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
    /// Carries what has arrived, at most so many bytes; answers how many, 0 when a side has gone.
    static std::size_t pass(Tcp::socket& from, Tcp::socket& to, std::size_t limit) {
        std::array<char, 4096> bytes{};
        boost::system::error_code error;
        const auto count = from.read_some(boost::asio::buffer(bytes, limit), error);
        if (!error)
            boost::asio::write(to, boost::asio::buffer(bytes, count), error);
        return error ? 0 : count;
    }

    const Tcp::endpoint server_;
    boost::asio::io_context context_;
    Tcp::acceptor listener_;
    std::atomic<bool> isHeld_ = false;
    std::atomic<std::ptrdiff_t> untilReset_ = -1; ///< none below zero
    std::mutex mutex_;
    bool hasEnded_ = false;
    std::array<int, 2> open_{-1, -1}; ///< the two connections, for the end to wake whoever waits
    std::thread thread_;
};

} // namespace velto::test
