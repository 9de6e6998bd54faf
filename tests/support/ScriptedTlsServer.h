// A TLS WebSocket server that does to its client whatever a test tells it, byte by byte if need be.
#pragma once

#include "rehearsal/LocalAuthority.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace velto::test {

/// The server's side of one connection; blocking, on the server's thread. Every operation is harmless after
/// the client has gone.
class ServerPeer {
  public:
    struct Frame {
        int opcode = 0;
        std::string payload;
    };

    ServerPeer(boost::asio::ip::tcp::socket& socket, const LocalAuthority::Issued& identity);

    bool acceptTls();
    /// Reads the request of the handshake, head and all; empty when there is none.
    std::string readRequest();
    void answerHandshake(const std::string& request);
    /// TLS and WebSocket at once; answers the request's head.
    std::string accept();

    /// The next frame of the client, unmasked; none when the connection is gone. Answers a closing handshake.
    std::optional<Frame> read();
    /// Drops frames up to one with this opcode, or to the end.
    void readUntil(int opcode);
    void readUntilClosed() { readUntil(8); }
    void sendText(std::string_view payload) { send(frame(0x1, payload)); }
    void sendBinary(std::string_view payload) { send(frame(0x2, payload)); }
    /// A server's frame; `payload` need not be all that `size` promises.
    static std::string frame(int opcode, std::string_view payload, bool isLast = true,
                             std::optional<std::uint64_t> size = {});
    void send(std::string_view bytes);
    void sendBytewise(std::string_view bytes);
    /// Ends the TCP connection with a reset.
    void reset();
    /// Waits until the client has gone.
    void drain();

  private:
    bool readAll(void* to, std::size_t count);
    std::optional<std::uint64_t> readNumber(std::size_t bytes);

    boost::asio::ssl::context context_{boost::asio::ssl::context::tls_server};
    std::optional<boost::asio::ssl::stream<boost::asio::ip::tcp::socket&>> tls_;
};

/// Listens on 127.0.0.1 and runs the script for every connection, one after the other.
class ScriptedTlsServer {
  public:
    using Script = std::function<void(ServerPeer&)>;

    explicit ScriptedTlsServer(Script script, std::string certifiedHost = "localhost");
    ScriptedTlsServer(Script script, LocalAuthority::Issued identity);
    /// Cuts a connection that still runs.
    ~ScriptedTlsServer();
    ScriptedTlsServer(const ScriptedTlsServer&) = delete;
    ScriptedTlsServer& operator=(const ScriptedTlsServer&) = delete;

    std::uint16_t port() const { return port_; }
    /// "localhost:port".
    std::string host() const { return "localhost:" + std::to_string(port_); }

  private:
    void run();

    Script script_;
    LocalAuthority::Issued identity_;
    boost::asio::io_context context_;
    boost::asio::ip::tcp::acceptor listener_;
    const std::uint16_t port_;
    std::mutex mutex_;
    int current_ = -1;
    bool ended_ = false;
    std::thread thread_;
};

} // namespace velto::test
