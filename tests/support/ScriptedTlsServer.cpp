// Blocking TLS and a WebSocket codec of a few lines.
#include "tests/support/ScriptedTlsServer.h"

#include "tests/support/TrustedAuthority.h"

#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/stream.hpp>

namespace velto::test {

namespace asio = boost::asio;
using asio::ip::tcp;

ServerPeer::ServerPeer(tcp::socket& socket, const LocalAuthority::Issued& identity) {
    context_.use_certificate(asio::buffer(identity.certificatePEM), asio::ssl::context::pem);
    context_.use_private_key(asio::buffer(identity.keyPEM), asio::ssl::context::pem);
    tls_.emplace(socket, context_);
}

bool ServerPeer::readAll(void* to, std::size_t count) {
    boost::system::error_code error;
    return asio::read(*tls_, asio::buffer(to, count), error) == count;
}

std::optional<std::uint64_t> ServerPeer::readNumber(std::size_t bytes) {
    unsigned char raw[8];
    if (!readAll(raw, bytes))
        return std::nullopt;
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        number = number << 8 | raw[i];
    return number;
}

bool ServerPeer::acceptTls() {
    boost::system::error_code error;
    tls_->handshake(asio::ssl::stream_base::server, error);
    return !error;
}

std::string ServerPeer::readRequest() {
    std::string request;
    char c = 0;
    while (!request.ends_with("\r\n\r\n") && readAll(&c, 1))
        request += c;
    return request;
}

void ServerPeer::answerHandshake(const std::string& request) {
    boost::system::error_code error;
    boost::beast::websocket::stream<decltype(tls_)::value_type&>(*tls_).accept(asio::buffer(request), error);
}

std::string ServerPeer::accept() {
    if (!acceptTls())
        return {};
    auto request = readRequest();
    if (!request.empty())
        answerHandshake(request);
    return request;
}

std::optional<ServerPeer::Frame> ServerPeer::read() {
    const auto head = readNumber(2);
    if (!head)
        return std::nullopt;
    std::optional<std::uint64_t> size = *head & 0x7F;
    if (*size >= 126)
        size = readNumber(*size == 126 ? 2 : 8);
    char mask[4];
    if (!size || !readAll(mask, sizeof mask))
        return std::nullopt;
    Frame received{static_cast<int>(*head >> 8 & 0xF), std::string(*size, ' ')};
    if (!readAll(received.payload.data(), received.payload.size()))
        return std::nullopt;
    for (std::size_t i = 0; i < received.payload.size(); ++i)
        received.payload[i] = static_cast<char>(received.payload[i] ^ mask[i % 4]);
    if (received.opcode == 8)
        send(frame(8, received.payload));
    return received;
}

void ServerPeer::readUntil(int opcode) {
    for (auto frame = read(); frame && frame->opcode != opcode;)
        frame = read();
}

std::string ServerPeer::frame(int opcode, std::string_view payload, bool isLast,
                              std::optional<std::uint64_t> size) {
    const std::uint64_t promised = size.value_or(payload.size());
    std::string bytes(1, static_cast<char>((isLast ? 0x80 : 0) | opcode));
    const int width = promised < 126 ? 0 : promised < 65536 ? 2 : 8;
    bytes += static_cast<char>(width == 0 ? promised : width == 2 ? 126u : 127u);
    for (int byte = width - 1; byte >= 0; --byte)
        bytes += static_cast<char>(promised >> (8 * byte));
    return bytes.append(payload);
}

void ServerPeer::send(std::string_view bytes) {
    boost::system::error_code error;
    asio::write(*tls_, asio::buffer(bytes), error);
}

void ServerPeer::sendBytewise(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i)
        send(bytes.substr(i, 1));
}

void ServerPeer::reset() {
    tls_->next_layer().set_option(tcp::socket::linger(true, 0));
}

void ServerPeer::drain() {
    char ignored[4096];
    while (readAll(ignored, sizeof ignored)) {
    }
}

ScriptedTlsServer::ScriptedTlsServer(Script script, std::string certifiedHost)
    : ScriptedTlsServer(std::move(script), trustedAuthority().issue(certifiedHost)) {}

ScriptedTlsServer::ScriptedTlsServer(Script script, LocalAuthority::Issued identity)
    : script_(std::move(script)), identity_(std::move(identity)),
      listener_(context_, {asio::ip::address_v4::loopback(), 0}), port_(listener_.local_endpoint().port()) {
    thread_ = std::thread([this] { run(); });
}

ScriptedTlsServer::~ScriptedTlsServer() {
    ::shutdown(listener_.native_handle(), SHUT_RDWR);
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        ::shutdown(current_, SHUT_RDWR);
    }
    thread_.join();
}

void ScriptedTlsServer::run() {
    for (;;) {
        boost::system::error_code error;
        auto socket = listener_.accept(error);
        if (error)
            return;
        socket.set_option(tcp::no_delay(true));
        {
            const std::lock_guard lock(mutex_);
            if (ended_)
                return;
            current_ = socket.native_handle();
        }
        ServerPeer peer(socket, identity_);
        script_(peer);
        const std::lock_guard lock(mutex_);
        current_ = -1;
    }
}

} // namespace velto::test
