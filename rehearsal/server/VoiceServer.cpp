// The voice server's socket.
#include "rehearsal/server/VoiceServer.h"

#include "rehearsal/server/KeyChecks.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
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
using Socket = websocket::stream<asio::ssl::stream<beast::tcp_stream>>;

constexpr auto kAnswer = asio::as_tuple(asio::use_awaitable);
constexpr std::chrono::milliseconds kTick{10};
constexpr std::chrono::seconds kToShutDown{1};

Conversation::Time now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

std::string_view view(beast::string_view text) {
    return {text.data(), text.size()};
}

HttpRequest plain(const http::request<http::string_body>& request) {
    HttpRequest result{std::string(view(request.method_string())),
                       std::string(view(request.target())),
                       static_cast<int>(request.version()),
                       {},
                       request.body()};
    for (const auto& field : request)
        result.fields.emplace_back(view(field.name_string()), view(field.value()));
    return result;
}

} // namespace

struct VoiceServer::Impl {
    /// A client whose upgrade is granted.
    struct Session {
        std::unique_ptr<ServerProtocol> protocol;
        std::shared_ptr<std::deque<Outgoing>> queue = std::make_shared<std::deque<Outgoing>>();
        WireTranscript::Section* wire = nullptr;
    };

    VoiceServerOptions options;
    Report report;
    asio::ssl::context tls{asio::ssl::context::tls_server};

    void violation(const std::string& what) { report({{"event", "violation"}, {"what", what}}); }
    asio::awaitable<void> connection(Tcp::socket peer);
    /// Answers requests until one of them asks for a session. None when none does.
    asio::awaitable<std::optional<Session>> upgrade(Socket& socket);
    /// Why the request for the upgrade is not granted.
    std::optional<Refusal> complaint(const HttpRequest& request, Session& session) const;
    http::response<http::string_body> answer(const KeyCheckAnswer& check);
    asio::awaitable<void> serve(Socket& socket, Session session);
    asio::awaitable<void> refuse(Socket& socket, Violation found);
    std::optional<Violation> receive(ServerProtocol& protocol, Conversation& conversation,
                                     std::string_view text) const;
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

std::optional<Refusal> VoiceServer::Impl::complaint(const HttpRequest& request, Session& session) const {
    session.protocol = makeServerProtocol(
        request.path(), [queue = session.queue](Outgoing message) { queue->push_back(std::move(message)); });
    if (!session.protocol)
        return Refusal{.what = "another path: " + std::string(request.path().substr(0, 120))};
    const auto& apiKey = options.apiKeys.at(session.protocol->provider());
    if (auto refusal = session.protocol->handshake(request, apiKey))
        return refusal;
    if (request.has("Sec-WebSocket-Protocol"))
        return Refusal{.what = "a subprotocol"};
    return {};
}

http::response<http::string_body> VoiceServer::Impl::answer(const KeyCheckAnswer& check) {
    if (!check.complaint.empty())
        violation("key check for " + std::string(displayName(check.provider)) + ": " + check.complaint);
    report({{"event", "keyCheck"}, {"provider", rawValue(check.provider)}, {"status", check.status}});
    http::response<http::string_body> response(static_cast<http::status>(check.status), 11, check.body);
    response.set(http::field::content_type, "application/json; charset=UTF-8");
    return response;
}

asio::awaitable<std::optional<VoiceServer::Impl::Session>> VoiceServer::Impl::upgrade(Socket& socket) {
    beast::flat_buffer buffer;
    while (true) {
        http::request<http::string_body> request;
        const auto [error, count] = co_await http::async_read(socket.next_layer(), buffer, request, kAnswer);
        if (error)
            co_return std::nullopt;
        const auto asked = plain(request);
        Session session;
        if (options.wire)
            session.wire = &options.wire->begin(asked);
        http::response<http::string_body> response;
        if (const auto check = answerKeyCheck(asked, options.apiKeys)) {
            response = answer(*check);
            response.keep_alive(request.keep_alive() && check->complaint.empty());
        } else {
            auto refusal = complaint(asked, session);
            if (!refusal && !websocket::is_upgrade(request))
                refusal = Refusal{.what = "no upgrade to a WebSocket"};
            if (!refusal) {
                const auto [refused] = co_await socket.async_accept(request, kAnswer);
                if (refused)
                    co_return std::nullopt;
                co_return session;
            }
            violation("handshake: " + refusal->what);
            response = {static_cast<http::status>(refusal->status), request.version(), refusal->what + "\n"};
            response.keep_alive(false);
        }
        response.prepare_payload();
        const auto [broken, sent] = co_await http::async_write(socket.next_layer(), response, kAnswer);
        if (broken || !response.keep_alive())
            co_return std::nullopt;
    }
}

std::optional<Violation> VoiceServer::Impl::receive(ServerProtocol& protocol, Conversation& conversation,
                                                    std::string_view text) const {
    const auto received = protocol.receive(text);
    if (!received)
        return received.error();
    if (!*received)
        return {};
    const auto& message = **received;
    if (const auto* configuration = std::get_if<ConfigurationMessage>(&message)) {
        if (configuration->systemInstruction.find(options.scenario.goal) == std::string::npos)
            return Violation{Violation::policy, "the system instruction does not hold the goal"};
        conversation.start(now());
    } else if (const auto* audio = std::get_if<AudioMessage>(&message)) {
        conversation.hear(audio->samples, now());
    } else if (const auto* turn = std::get_if<TextMessage>(&message)) {
        if (turn->text.find(options.scenario.goal) == std::string::npos)
            return Violation{Violation::policy, "the text turn does not hold the goal"};
        conversation.greet(now());
    } else if (std::holds_alternative<ToolResponseMessage>(message)) {
        conversation.toolAnswered();
    }
    return {};
}

asio::awaitable<void> VoiceServer::Impl::refuse(Socket& socket, Violation found) {
    violation(found.what);
    websocket::close_reason reason(static_cast<websocket::close_code>(found.closeCode));
    reason.reason.assign(found.what.data(), std::min<std::size_t>(found.what.size(), 100));
    co_await socket.async_close(reason, kAnswer);
}

asio::awaitable<void> VoiceServer::Impl::serve(Socket& socket, Session session) {
    const auto ended = std::make_shared<bool>(false);
    const auto conversation =
        std::make_shared<Conversation>(options.scenario, options.voices, *session.protocol, report);
    if (session.wire != nullptr)
        socket.control_callback([wire = session.wire](websocket::frame_type kind, beast::string_view) {
            if (kind != websocket::frame_type::close)
                wire->control(kind == websocket::frame_type::ping ? "ping" : "pong");
        });
    session.protocol->connected();
    // The writer must be gone before the socket is.
    asio::steady_timer writerGone(socket.get_executor(), asio::steady_timer::time_point::max());
    asio::co_spawn(socket.get_executor(), speakOn(conversation, session.queue, socket, ended),
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
            const std::string_view text(static_cast<const char*>(bytes.data()), bytes.size());
            if (session.wire != nullptr)
                session.wire->text(text);
            wrong = receive(*session.protocol, *conversation, text);
        } else {
            if (session.wire != nullptr)
                session.wire->binary(buffer.size());
            wrong = Violation{Violation::invalidPayload, "a binary frame"};
        }
        buffer.consume(buffer.size());
        if (wrong) {
            co_await refuse(socket, *wrong);
            break;
        }
    }
    *ended = true;
    if (session.wire != nullptr)
        session.wire->closed(socket.reason().code);
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
    if (auto session = co_await upgrade(socket)) {
        report({{"event", "connected"}, {"provider", rawValue(session->protocol->provider())}});
        co_await serve(socket, std::move(*session));
    } else {
        // Says that it ends here: a client that reads to the end must not take it for a cut.
        beast::get_lowest_layer(socket).expires_after(kToShutDown);
        co_await socket.next_layer().async_shutdown(kAnswer);
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
