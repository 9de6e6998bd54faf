// The voice server's socket.
#include "rehearsal/server/VoiceServer.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>

namespace velto::rehearsal {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using Tcp = asio::ip::tcp;
using Error = boost::system::error_code;
using Socket = websocket::stream<beast::ssl_stream<beast::tcp_stream>>;

constexpr auto kAnswer = asio::as_tuple(asio::use_awaitable);
constexpr std::chrono::milliseconds kTick{10};
constexpr std::string_view kPath =
    "/ws/google.ai.generativelanguage.v1beta.GenerativeService.BidiGenerateContent";

Conversation::Time now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

/// RFC 3986, section 2.1; none when a percent sign is not followed by two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text) {
    const auto digit = [](char c) {
        constexpr std::string_view digits = "0123456789abcdef";
        return digits.find(static_cast<char>(c >= 'A' && c <= 'F' ? c + ('a' - 'A') : c));
    };
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        if (i + 2 >= text.size() || digit(text[i + 1]) > 15 || digit(text[i + 2]) > 15)
            return {};
        result += static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2]));
        i += 2;
    }
    return result;
}

/// What is wrong with the request for the upgrade; empty when nothing is.
std::string complaint(const http::request<http::string_body>& request, const std::string& apiKey) {
    const std::string_view target(request.target().data(), request.target().size());
    const auto mark = target.find('?');
    if (target.substr(0, mark) != kPath)
        return "another path: " + std::string(target.substr(0, mark).substr(0, 120));
    const auto query = mark == std::string_view::npos ? "" : target.substr(mark + 1);
    if (!query.starts_with("key=") || query.find('&') != std::string_view::npos)
        return "the query is not the one item 'key'";
    if (percentDecoded(query.substr(4)) != apiKey)
        return "another key";
    if (request.find(http::field::sec_websocket_protocol) != request.end())
        return "a subprotocol";
    if (!websocket::is_upgrade(request))
        return "no upgrade to a WebSocket";
    return {};
}

} // namespace

struct VoiceServer::Impl {
    VoiceServerOptions options;
    Report report;
    asio::ssl::context tls{asio::ssl::context::tls_server};

    void violation(const std::string& what) { report({{"event", "violation"}, {"what", what}}); }
    asio::awaitable<void> connection(Tcp::socket peer);
    asio::awaitable<bool> upgrade(Socket& socket);
    asio::awaitable<void> session(Socket& socket);
    asio::awaitable<void> refuse(Socket& socket, Violation found);
    std::optional<Violation> receive(Conversation& conversation, std::string_view text) const;
};

namespace {

/// Sends what the conversation says, and moves it on as time goes by, until the connection ends.
asio::awaitable<void> speakOn(std::shared_ptr<Conversation> conversation,
                              std::shared_ptr<std::deque<Outgoing>> queue, Socket& socket,
                              std::shared_ptr<bool> ended) {
    asio::steady_timer timer(co_await asio::this_coro::executor);
    while (!*ended) {
        conversation->tick(now());
        while (!queue->empty() && !*ended) {
            const auto message = std::move(queue->front());
            queue->pop_front();
            socket.binary(message.binary);
            const auto buffer = asio::buffer(message.text);
            const auto [error, sent] = co_await socket.async_write(buffer, kAnswer);
            if (error)
                co_return;
        }
        timer.expires_after(kTick);
        co_await timer.async_wait(kAnswer);
    }
}

} // namespace

asio::awaitable<bool> VoiceServer::Impl::upgrade(Socket& socket) {
    beast::flat_buffer buffer;
    http::request<http::string_body> request;
    const auto [error, count] = co_await http::async_read(socket.next_layer(), buffer, request, kAnswer);
    if (error)
        co_return false;
    if (const auto wrong = complaint(request, options.apiKey); !wrong.empty()) {
        violation("handshake: " + wrong);
        http::response<http::string_body> answer(http::status::forbidden, request.version(), wrong + "\n");
        answer.prepare_payload();
        co_await http::async_write(socket.next_layer(), answer, kAnswer);
        co_return false;
    }
    const auto [refused] = co_await socket.async_accept(request, kAnswer);
    co_return !refused;
}

std::optional<Violation> VoiceServer::Impl::receive(Conversation& conversation, std::string_view text) const {
    const auto message = parseClientMessage(text);
    if (!message)
        return message.error();
    if (auto wrong = conversation.order().accept(*message))
        return wrong;
    if (const auto* setup = std::get_if<SetupMessage>(&*message)) {
        if (setup->systemInstruction.find(options.scenario.goal) == std::string::npos)
            return Violation{Violation::policy, "the system instruction does not hold the goal"};
        conversation.start(now());
    } else if (const auto* audio = std::get_if<AudioMessage>(&*message)) {
        conversation.hear(audio->samples, now());
    } else if (const auto* turn = std::get_if<TextMessage>(&*message)) {
        if (turn->text.find(options.scenario.goal) == std::string::npos)
            return Violation{Violation::policy, "the text turn does not hold the goal"};
        conversation.greet(now());
    }
    return {};
}

asio::awaitable<void> VoiceServer::Impl::refuse(Socket& socket, Violation found) {
    violation(found.what);
    websocket::close_reason reason(static_cast<websocket::close_code>(found.closeCode));
    reason.reason.assign(found.what.data(), std::min<std::size_t>(found.what.size(), 100));
    co_await socket.async_close(reason, kAnswer);
}

asio::awaitable<void> VoiceServer::Impl::session(Socket& socket) {
    const auto queue = std::make_shared<std::deque<Outgoing>>();
    const auto ended = std::make_shared<bool>(false);
    const auto conversation = std::make_shared<Conversation>(
        options.scenario, options.voices,
        Conversation::Hooks{[queue](Outgoing message) { queue->push_back(std::move(message)); }, report});
    // The writer must be gone before the socket is.
    asio::steady_timer writerGone(socket.get_executor(), asio::steady_timer::time_point::max());
    asio::co_spawn(socket.get_executor(), speakOn(conversation, queue, socket, ended),
                   [&writerGone](const std::exception_ptr&) {
                       writerGone.expires_at(asio::steady_timer::time_point::min());
                   });
    beast::flat_buffer buffer;
    std::uint16_t closeCode = 0;
    while (true) {
        const auto [error, count] = co_await socket.async_read(buffer, kAnswer);
        if (error) {
            closeCode = socket.reason().code;
            break;
        }
        std::optional<Violation> wrong;
        if (socket.got_text()) {
            const auto bytes = buffer.cdata();
            wrong = receive(*conversation, {static_cast<const char*>(bytes.data()), bytes.size()});
        } else {
            wrong = Violation{Violation::invalidPayload, "a binary frame"};
        }
        buffer.consume(buffer.size());
        if (wrong) {
            co_await refuse(socket, *wrong);
            break;
        }
    }
    *ended = true;
    auto closed = conversation->measures();
    closed["event"] = "closed";
    closed["code"] = closeCode;
    report(std::move(closed));
    beast::get_lowest_layer(socket).close();
    co_await writerGone.async_wait(kAnswer);
}

asio::awaitable<void> VoiceServer::Impl::connection(Tcp::socket peer) {
    Error ignored;
    peer.set_option(Tcp::no_delay(true), ignored);
    Socket socket(beast::tcp_stream(std::move(peer)), tls);
    socket.read_message_max(1 << 20);
    const auto [error] =
        co_await socket.next_layer().async_handshake(asio::ssl::stream_base::server, kAnswer);
    if (error) {
        violation("TLS handshake: " + error.message());
        co_return;
    }
    if (co_await upgrade(socket)) {
        report({{"event", "connected"}});
        co_await session(socket);
    }
}

VoiceServer::VoiceServer(VoiceServerOptions options, Report report)
    : impl_(std::make_unique<Impl>(Impl{std::move(options), std::move(report)})) {}

VoiceServer::~VoiceServer() = default;

asio::awaitable<void> VoiceServer::serve() {
    impl_->tls.use_certificate_chain(asio::buffer(impl_->options.certificatePEM));
    impl_->tls.use_private_key(asio::buffer(impl_->options.keyPEM), asio::ssl::context::pem);
    const auto executor = co_await asio::this_coro::executor;
    Tcp::acceptor acceptor(executor, {asio::ip::address_v4::loopback(), 0});
    impl_->report({{"event", "listening"}, {"port", acceptor.local_endpoint().port()}});
    while (true) {
        auto [error, peer] = co_await acceptor.async_accept(kAnswer);
        if (!error)
            asio::co_spawn(executor, impl_->connection(std::move(peer)), asio::detached);
    }
}

} // namespace velto::rehearsal
