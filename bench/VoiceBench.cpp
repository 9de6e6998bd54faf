// The voice transport's cost: CPU time per message against a bare OpenSSL loop, and base64 against memcpy.
#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/voice/Base64.h"
#include "VeltoShared/voice/GeminiLiveClient.h"
#include "tests/support/ScriptedTlsServer.h"
#include "tests/support/TrustedAuthority.h"

#include <boost/asio/use_future.hpp>

#include <openssl/ssl.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <future>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace velto {
namespace {

using test::ScriptedTlsServer;
using test::ServerPeer;

constexpr std::size_t kPcmBytes = 45'000;
constexpr int kMessages = 1500;
constexpr int kRounds = 7;

/// The calling thread's own CPU time, so that the server's is not counted.
double threadMicroseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

std::vector<std::byte> someBytes(std::size_t count) {
    std::vector<std::byte> bytes(count);
    std::uint32_t state = 1;
    for (auto& byte : bytes)
        byte = static_cast<std::byte>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

std::string base64Of(std::span<const std::byte> bytes) {
    std::string text(Base64::encodedSize(bytes.size()), ' ');
    Base64::encode(bytes, text.data());
    return text;
}

/// Sends audio messages one at a time: the next when the client has answered the last, as live speech comes.
/// A round ends with a turn's end.
void serveAudio(ServerPeer& peer) {
    peer.accept();
    const auto message =
        ServerPeer::frame(2, R"({"serverContent":{"modelTurn":{"parts":[{"inlineData":{"mimeType":)"
                             R"("audio/pcm;rate=24000","data":")" +
                                 base64Of(someBytes(kPcmBytes)) + R"("}}]}}})");
    const auto end = ServerPeer::frame(1, R"({"serverContent":{"turnComplete":true}})");
    peer.read();
    for (;;) {
        const auto go = peer.read();
        if (!go || go->opcode == 8)
            return;
        for (int i = 0; i < kMessages; ++i)
            peer.send(message);
        peer.send(end);
    }
}

asio::awaitable<double> receiveRound(VoiceSession& session) {
    co_await session.sendClientText("go");
    double start = 0;
    for (;;) {
        auto event = co_await session.events().next();
        if (start == 0)
            start = threadMicroseconds();
        if (!event || std::holds_alternative<event::TurnComplete>(*event))
            co_return (threadMicroseconds() - start) / (kMessages - 1);
    }
}

/// The floor: a blocking read of frames into one buffer, the audio found by its quotes, decoded and copied
/// out.
class FloorClient {
  public:
    FloorClient(std::uint16_t port) : context_(SSL_CTX_new(TLS_client_method())) {
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
        sendEmpty();
    }
    ~FloorClient() {
        SSL_free(tls_);
        SSL_CTX_free(context_);
        ::close(socket_);
    }
    FloorClient(const FloorClient&) = delete;
    FloorClient& operator=(const FloorClient&) = delete;

    double round() {
        sendEmpty();
        double start = 0;
        for (;;) {
            const auto message = receive();
            if (start == 0)
                start = threadMicroseconds();
            const auto from = message.find("\"data\":\"");
            if (from == std::string_view::npos)
                return (threadMicroseconds() - start) / (kMessages - 1);
            const auto text = message.substr(from + 8, message.find('"', from + 8) - from - 8);
            if (const auto size = Base64::decode(text, decoded_))
                std::memcpy(copied_.data(), decoded_.data(), *size);
        }
    }

  private:
    void sendEmpty() {
        constexpr unsigned char kFrame[] = {0x81, 0x80, 0, 0, 0, 0};
        SSL_write(tls_, kFrame, sizeof kFrame);
    }
    void fill() {
        const int got = SSL_read(tls_, buffer_.data() + filled_, static_cast<int>(buffer_.size() - filled_));
        if (got <= 0)
            std::abort();
        filled_ += static_cast<std::size_t>(got);
    }
    std::string_view receive() {
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

    SSL_CTX* context_;
    SSL* tls_;
    int socket_;
    std::vector<char> buffer_ = std::vector<char>(1 << 20);
    std::size_t filled_ = 0;
    std::size_t used_ = 0;
    std::vector<std::byte> decoded_ = std::vector<std::byte>(kPcmBytes + 3);
    std::vector<std::byte> copied_ = std::vector<std::byte>(kPcmBytes + 3);
};

template <class T>
T run(asio::awaitable<T> task) {
    return asio::co_spawn(Background::executor(), std::move(task), asio::use_future).get();
}

void benchInbound() {
    ScriptedTlsServer ourServer(serveAudio);
    ScriptedTlsServer floorServer(serveAudio);
    auto session = std::make_shared<GeminiLiveClient>(SessionOptions{"k", "m", "v", "i", ourServer.host()});
    if (!run(session->connect()))
        std::abort();
    FloorClient floorClient(floorServer.port());
    std::vector<double> ours;
    std::vector<double> floors;
    for (int i = 0; i < kRounds; ++i) {
        ours.push_back(run(receiveRound(*session)));
        floors.push_back(floorClient.round());
    }
    run(session->close());
    std::printf("inbound, 45 000 PCM bytes: client %.1f us, OpenSSL loop %.1f us of CPU a message: ratio "
                "%.2f (aim 1.4)\n",
                median(ours), median(floors), median(ours) / median(floors));
}

asio::awaitable<double> sendRound(VoiceSession& session, std::span<const std::byte> pcm) {
    const double start = threadMicroseconds();
    for (int i = 0; i < kMessages; ++i)
        co_await session.sendAudio(pcm);
    co_return (threadMicroseconds() - start) / kMessages;
}

void benchOutbound() {
    ScriptedTlsServer server([](ServerPeer& peer) {
        peer.accept();
        peer.readUntilClosed();
    });
    auto session = std::make_shared<GeminiLiveClient>(SessionOptions{"k", "m", "v", "i", server.host()});
    if (!run(session->connect()))
        std::abort();
    const auto pcm = someBytes(640);
    std::vector<double> rounds;
    for (int i = 0; i < kRounds; ++i)
        rounds.push_back(run(sendRound(*session, pcm)));
    run(session->close());
    std::printf("outbound, 640 PCM bytes: %.2f us of CPU a message, the kernel's share included\n",
                median(rounds));
}

/// Nanoseconds a call, over `count` messages in turn.
template <class Work>
double nanoseconds(std::size_t count, Work work) {
    std::vector<double> rounds;
    for (int round = 0; round < 25; ++round) {
        const double start = threadMicroseconds();
        for (std::size_t i = 0; i < 512; ++i)
            work(i % count);
        rounds.push_back((threadMicroseconds() - start) * 1000 / 512);
    }
    return median(rounds);
}

/// With one message all stays in the second-level cache; with many, each comes from memory, as live ones do.
void benchBase64(std::size_t count, const char* what) {
    const std::vector<std::string> texts(count, base64Of(someBytes(kPcmBytes)));
    std::vector<std::string> copies(count, std::string(texts[0].size(), ' '));
    std::vector<std::vector<std::byte>> outs(count, std::vector<std::byte>(kPcmBytes));
    const double copy = nanoseconds(count, [&](std::size_t i) {
        std::memcpy(copies[i].data(), texts[i].data(), texts[i].size());
        asm volatile("" ::"r"(copies[i].data()) : "memory");
    });
    std::printf("base64, 60 000 characters, %s: memcpy %.0f ns", what, copy);
    for (const auto& [name, engine] : {std::pair{"portable", Base64::Engine::portable},
                                       {"AVX2", Base64::Engine::avx2},
                                       {"AVX-512", Base64::Engine::avx512}}) {
        if (!Base64::isAvailable(engine))
            continue;
        const double decode =
            nanoseconds(count, [&](std::size_t i) { Base64::decode(texts[i], outs[i], engine); });
        std::printf(", %s %.0f ns (%.2f)", name, decode, decode / copy);
    }
    std::printf("\n");
}

} // namespace
} // namespace velto

int main() {
    velto::test::trustedAuthority();
    const velto::BackgroundThreads background;
    velto::benchBase64(512, "from memory");
    velto::benchBase64(1, "in the cache");
    velto::benchInbound();
    velto::benchOutbound();
}
