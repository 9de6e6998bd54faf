// A bad network between a client and a server on this computer: it holds and cuts.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace velto::test {

/// Listens on 127.0.0.1 and carries the bytes of one TCP connection at a time to a port of this computer and
/// back, on a thread of its own. The settings: any thread, at any time.
class UnreliableWire {
  public:
    explicit UnreliableWire(std::uint16_t serverPort);
    ~UnreliableWire();
    UnreliableWire(const UnreliableWire&) = delete;
    UnreliableWire& operator=(const UnreliableWire&) = delete;

    /// "localhost:port".
    std::string host() const { return "localhost:" + std::to_string(listener_.local_endpoint().port()); }

    /// Nothing gets through, in either direction, until `release`; the connection stays open.
    void hold() { isHeld_ = true; }
    void release();
    /// Lets so many more bytes through to the client, then resets both connections.
    void resetAfter(std::size_t bytes) { untilReset_ = static_cast<std::ptrdiff_t>(bytes); }

  private:
    using Tcp = boost::asio::ip::tcp;
    void run();
    /// Until either side has gone.
    void carry(Tcp::socket& client, Tcp::socket& server);

    const std::uint16_t serverPort_;
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
