// The one transport of the voice providers: a TLS WebSocket client (RFC 6455) for whole text messages.
#pragma once

#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Result.h"

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/awaitable.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

/// One connection, opened once. All operations: on the given executor, which runs one thing at a time; the
/// object may be let go there at any time, and must be before its execution context ends.
///
/// Trust: the system's hashed directory of authorities (SSL_CERT_DIR in its place if set) and the file that
/// SSL_CERT_FILE names, read when the process opens its first connection. The server's certificate must be
/// for the host that was asked for.
///
/// Descriptions of failures are for people: they name the host and say what happened, without the request's
/// path, query or header fields, and are one line.
class VoiceSocket : public std::enable_shared_from_this<VoiceSocket> {
  public:
    struct Request {
        std::string host;   ///< "host" or "host:port", see HostAddress; 443 without a port
        std::string target; ///< path and query, already encoded
        std::vector<std::pair<std::string, std::string>> headers;
    };

    struct Limits {
        /// From the first look-up to the accepted handshake.
        Clock::Duration opening = std::chrono::seconds(60);
        /// While there is no network (no route, no name server), opening tries again for so long.
        Clock::Duration connectivity = std::chrono::seconds(10);
        /// For each address of a host that has several.
        Clock::Duration address = std::chrono::seconds(10);
        /// For the closing handshake, whoever begins it; then the connection is cut.
        Clock::Duration closing = std::chrono::seconds(2);
        /// While bytes that were sent are not acknowledged, or the peer takes none, the connection lasts so
        /// long; the system by itself would wait a quarter of an hour for a network that has gone.
        Clock::Duration unacknowledged = std::chrono::seconds(60);
        /// Bytes of one received message; a longer one ends the connection with code 1009.
        std::size_t message = std::size_t{32} << 20;
        /// Senders that may wait for the one who writes.
        std::size_t waiting = 64;
    };

    /// The right to write; one sender at a time has it, the others wait in their order.
    class Turn {
      public:
        Turn() = default;
        explicit Turn(std::shared_ptr<VoiceSocket> socket) : socket_(std::move(socket)) {}
        Turn(Turn&& other) noexcept = default;
        Turn& operator=(Turn&&) = delete;
        ~Turn() {
            if (socket_)
                socket_->passTurn();
        }
        explicit operator bool() const { return socket_ != nullptr; }

      private:
        std::shared_ptr<VoiceSocket> socket_;
    };

    static std::shared_ptr<VoiceSocket> make(asio::any_io_executor executor, Request request, Limits limits);
    ~VoiceSocket();
    VoiceSocket(const VoiceSocket&) = delete;
    VoiceSocket& operator=(const VoiceSocket&) = delete;

    asio::awaitable<Result<>> open();

    /// The turn at once, or an empty one when somebody else has it or the connection is not open.
    Turn tryTurn();
    /// Waits for the turn. Empty when the connection is not open, or when `waiting` senders wait already:
    /// a peer that has stopped reading cannot make us keep more than that.
    asio::awaitable<Turn> turn(std::size_t waiting);
    /// Sends one text frame and waits until the operating system has taken it. Only with the turn.
    /// `message` must stay valid until then. A wait that is cancelled half-way makes the connection useless.
    asio::awaitable<Result<>> write(std::string_view message);
    /// `turn` and `write`.
    asio::awaitable<Result<>> send(std::string message);

    /// The next message, valid until the next `receive`. Of a binary message, the UTF-8 text with U+FFFD for
    /// what is broken.
    asio::awaitable<Result<std::string_view>> receive();

    /// Starts the closing handshake with code 1000 and lets it finish by itself, within its limit. Pending
    /// and later operations fail. While opening, cuts the connection.
    void close();
    /// Cuts the connection.
    void abort();
    /// `close` or `abort` was called.
    bool isClosed() const;

  private:
    struct Impl;
    struct Waiter;
    class Watchdog;

    VoiceSocket(asio::any_io_executor executor, Request request, Limits limits);
    static asio::awaitable<void> finishClosing(std::shared_ptr<VoiceSocket> socket);
    asio::awaitable<Result<>> openSteps();
    asio::awaitable<Result<>> connectToHost();
    void passTurn();

    std::unique_ptr<Impl> impl_;
};

} // namespace velto
