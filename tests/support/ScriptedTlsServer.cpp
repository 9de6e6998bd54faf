// Blocking TLS and a WebSocket codec of a few lines.
#include "tests/support/ScriptedTlsServer.h"

#include "VeltoShared/voice/Base64.h"
#include "tests/support/TrustedAuthority.h"

#include <boost/asio/read.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/write.hpp>

#include <openssl/sha.h>

#include <span>

namespace velto::test {

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

std::string acceptKey(const std::string& request) {
    constexpr std::string_view kName = "Sec-WebSocket-Key: ";
    const auto at = request.find(kName);
    const auto key = request.substr(at + kName.size(), request.find('\r', at) - at - kName.size());
    const std::string salted = key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
    unsigned char digest[SHA_DIGEST_LENGTH];
    SHA1(reinterpret_cast<const unsigned char*>(salted.data()), salted.size(), digest);
    std::string text(Base64::encodedSize(sizeof digest), ' ');
    Base64::encode(std::as_bytes(std::span(digest)), text.data());
    return text;
}

} // namespace

struct ServerPeer::Impl {
    asio::ssl::context context{asio::ssl::context::tls_server};
    asio::ssl::stream<tcp::socket&> tls;

    Impl(tcp::socket& socket, const LocalAuthority::Issued& identity) : tls(socket, use(identity)) {}

    asio::ssl::context& use(const LocalAuthority::Issued& identity) {
        context.use_certificate(asio::buffer(identity.certificatePEM), asio::ssl::context::pem);
        context.use_private_key(asio::buffer(identity.keyPEM), asio::ssl::context::pem);
        return context;
    }
    bool readAll(void* to, std::size_t count) {
        boost::system::error_code error;
        return asio::read(tls, asio::buffer(to, count), error) == count;
    }
    std::optional<std::uint64_t> readNumber(std::size_t bytes) {
        unsigned char raw[8];
        if (!readAll(raw, bytes))
            return std::nullopt;
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            number = number << 8 | raw[i];
        return number;
    }
};

ServerPeer::ServerPeer(tcp::socket& socket, const LocalAuthority::Issued& identity)
    : impl_(std::make_unique<Impl>(socket, identity)) {}

ServerPeer::~ServerPeer() = default;

bool ServerPeer::acceptTls() {
    boost::system::error_code error;
    impl_->tls.handshake(asio::ssl::stream_base::server, error);
    return !error;
}

std::string ServerPeer::readRequest() {
    std::string request;
    char c = 0;
    while (!request.ends_with("\r\n\r\n") && impl_->readAll(&c, 1))
        request += c;
    return request;
}

void ServerPeer::answerHandshake(const std::string& request) {
    send("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
         "Sec-WebSocket-Accept: " +
         acceptKey(request) + "\r\n\r\n");
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
    const auto head = impl_->readNumber(2);
    if (!head)
        return std::nullopt;
    std::optional<std::uint64_t> size = *head & 0x7F;
    if (*size >= 126)
        size = impl_->readNumber(*size == 126 ? 2 : 8);
    char mask[4];
    if (!size || !impl_->readAll(mask, sizeof mask))
        return std::nullopt;
    Frame received{static_cast<int>(*head >> 8 & 0xF), std::string(*size, ' ')};
    if (!impl_->readAll(received.payload.data(), received.payload.size()))
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
    asio::write(impl_->tls, asio::buffer(bytes), error);
}

void ServerPeer::sendBytewise(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i)
        send(bytes.substr(i, 1));
}

void ServerPeer::reset() {
    impl_->tls.next_layer().set_option(tcp::socket::linger(true, 0));
}

void ServerPeer::drain() {
    char ignored[4096];
    while (impl_->readAll(ignored, sizeof ignored)) {
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
