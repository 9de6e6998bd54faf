// Blocking OpenSSL and a WebSocket codec of a few lines.
#include "tests/support/ScriptedTlsServer.h"

#include "VeltoShared/voice/Base64.h"
#include "tests/support/TrustedAuthority.h"

#include <openssl/pem.h>
#include <openssl/sha.h>
#include <openssl/ssl.h>

#include <csignal>
#include <span>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace velto::test {
namespace {

SSL_CTX* makeContext(const LocalAuthority::Issued& identity) {
    SSL_CTX* context = SSL_CTX_new(TLS_server_method());
    BIO* memory =
        BIO_new_mem_buf(identity.certificatePEM.data(), static_cast<int>(identity.certificatePEM.size()));
    X509* certificate = PEM_read_bio_X509(memory, nullptr, nullptr, nullptr);
    BIO_free(memory);
    memory = BIO_new_mem_buf(identity.keyPEM.data(), static_cast<int>(identity.keyPEM.size()));
    EVP_PKEY* key = PEM_read_bio_PrivateKey(memory, nullptr, nullptr, nullptr);
    BIO_free(memory);
    SSL_CTX_use_certificate(context, certificate);
    SSL_CTX_use_PrivateKey(context, key);
    X509_free(certificate);
    EVP_PKEY_free(key);
    return context;
}

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
    int socket;
    SSL_CTX* context;
    SSL* tls;

    bool readAll(char* to, std::size_t count) {
        while (count > 0) {
            const int got = SSL_read(tls, to, static_cast<int>(count));
            if (got <= 0)
                return false;
            to += got;
            count -= static_cast<std::size_t>(got);
        }
        return true;
    }
    std::optional<std::uint64_t> readNumber(std::size_t bytes) {
        unsigned char raw[8];
        if (!readAll(reinterpret_cast<char*>(raw), bytes))
            return std::nullopt;
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            number = number << 8 | raw[i];
        return number;
    }
};

ServerPeer::ServerPeer(int socket, const LocalAuthority::Issued& identity)
    : impl_(std::make_unique<Impl>(Impl{socket, makeContext(identity), nullptr})) {
    impl_->tls = SSL_new(impl_->context);
    SSL_set_fd(impl_->tls, socket);
}

ServerPeer::~ServerPeer() {
    SSL_free(impl_->tls);
    SSL_CTX_free(impl_->context);
}

bool ServerPeer::acceptTls() {
    return SSL_accept(impl_->tls) == 1;
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
    while (!bytes.empty()) {
        const int sent = SSL_write(impl_->tls, bytes.data(), static_cast<int>(bytes.size()));
        if (sent <= 0)
            return;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void ServerPeer::sendBytewise(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i)
        send(bytes.substr(i, 1));
}

void ServerPeer::reset() {
    const linger hard{1, 0};
    ::setsockopt(impl_->socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
}

void ServerPeer::drain() {
    char ignored[4096];
    while (SSL_read(impl_->tls, ignored, sizeof ignored) > 0) {
    }
}

ScriptedTlsServer::ScriptedTlsServer(Script script, std::string certifiedHost)
    : ScriptedTlsServer(std::move(script), trustedAuthority().issue(certifiedHost)) {}

ScriptedTlsServer::ScriptedTlsServer(Script script, LocalAuthority::Issued identity)
    : script_(std::move(script)), identity_(std::move(identity)) {
    std::signal(SIGPIPE, SIG_IGN);
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(listener_, reinterpret_cast<const sockaddr*>(&address), size);
    ::listen(listener_, 8);
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { run(); });
}

ScriptedTlsServer::~ScriptedTlsServer() {
    ::shutdown(listener_, SHUT_RDWR);
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        if (current_ >= 0)
            ::shutdown(current_, SHUT_RDWR);
    }
    thread_.join();
    ::close(listener_);
}

void ScriptedTlsServer::run() {
    for (;;) {
        const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            return;
        const int on = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        {
            const std::lock_guard lock(mutex_);
            if (ended_)
                ::shutdown(socket, SHUT_RDWR);
            current_ = socket;
        }
        {
            ServerPeer peer(socket, identity_);
            script_(peer);
        }
        const std::lock_guard lock(mutex_);
        current_ = -1;
        ::close(socket);
    }
}

} // namespace velto::test
