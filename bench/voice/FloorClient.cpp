#include "bench/voice/FloorClient.h"

#include "VeltoShared/voice/Base64.h"
#include "bench/voice/Figures.h"

#include <cstdlib>
#include <cstring>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace velto::bench {

FloorClient::FloorClient(std::uint16_t port, std::string_view audioKey)
    : audioKey_(audioKey), context_(SSL_CTX_new(TLS_client_method())) {
    socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    tls_ = SSL_new(context_);
    SSL_set_fd(tls_, socket_);
    SSL_connect(tls_);
    constexpr std::string_view kRequest =
        "GET / HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\n"
        "Connection: Upgrade\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
        "Sec-WebSocket-Version: 13\r\n\r\n";
    SSL_write(tls_, kRequest.data(), static_cast<int>(kRequest.size()));
    while (filled_ < 4 || std::memcmp(buffer_.data() + filled_ - 4, "\r\n\r\n", 4) != 0)
        fill();
    filled_ = 0;
    sendText("{}");
    receive();
}

FloorClient::~FloorClient() {
    SSL_free(tls_);
    SSL_CTX_free(context_);
    ::close(socket_);
}

double FloorClient::round(int messages) {
    sendText(R"("go")");
    double start = 0;
    for (;;) {
        const auto message = receive();
        const auto key = message.find(audioKey_);
        if (key == std::string_view::npos)
            return (threadMicroseconds() - start) / (messages - 1);
        const auto from = key + audioKey_.size();
        const auto text = message.substr(from, message.find('"', from) - from);
        const auto size = Base64::decode(text, decoded_);
        if (!size)
            std::abort();
        std::memcpy(copied_.data(), decoded_.data(), *size);
        if (start == 0)
            start = threadMicroseconds();
    }
}

void FloorClient::sendText(std::string_view shortText) {
    // Masked with zeros.
    std::string frame{'\x81', static_cast<char>(0x80 | shortText.size()), 0, 0, 0, 0};
    frame += shortText;
    SSL_write(tls_, frame.data(), static_cast<int>(frame.size()));
}

void FloorClient::fill() {
    const int got = SSL_read(tls_, buffer_.data() + filled_, static_cast<int>(buffer_.size() - filled_));
    if (got <= 0)
        std::abort();
    filled_ += static_cast<std::size_t>(got);
}

std::string_view FloorClient::receive() {
    // What is left of the last read moves to the front: less than one record.
    std::memmove(buffer_.data(), buffer_.data() + used_, filled_ - used_);
    filled_ -= used_;
    used_ = 0;
    while (filled_ < 10)
        fill();
    const auto* bytes = reinterpret_cast<const unsigned char*>(buffer_.data());
    std::size_t size = bytes[1];
    std::size_t head = 2;
    if (size == 126) {
        size = static_cast<std::size_t>(bytes[2]) << 8 | bytes[3];
        head = 4;
    }
    while (filled_ < head + size)
        fill();
    used_ = head + size;
    return {buffer_.data() + head, size};
}

} // namespace velto::bench
