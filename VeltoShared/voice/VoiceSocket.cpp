// Boost.Beast over OpenSSL: the only place that compiles either's streams.
#include "VeltoShared/voice/VoiceSocket.h"

#include "VeltoShared/core/Utf8.h"
#include "VeltoShared/voice/FieldValue.h"
#include "VeltoShared/voice/HostLookup.h"
#include "VeltoShared/voice/TlsTrust.h"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <algorithm>
#include <list>

#include <netinet/tcp.h>

namespace velto {
namespace {

namespace beast = boost::beast;
namespace websocket = beast::websocket;
using asio::ip::tcp;
using boost::system::error_code;

constexpr auto kConnectivityRetry = std::chrono::milliseconds(500);
/// A buffer that a huge message has grown is given back.
constexpr std::size_t kBufferKept = std::size_t{1} << 20;
/// Servers refuse longer ones; at 64 KiB Beast throws.
constexpr std::size_t kLongestField = std::size_t{32} << 10;
/// Masking copies a message through this; audio messages fit and leave in one TLS record.
constexpr std::size_t kWriteBuffer = std::size_t{16} << 10;

/// Parts of it may come from the server or from a setting.
std::string oneLine(std::string_view description) {
    auto line = repairedUtf8(description);
    for (char& c : line)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = ' ';
    return line;
}

Failure transportFailure(std::string_view description) {
    return {kErrorTransport, oneLine(description)};
}

bool isNetworkAbsent(const error_code& error) {
    return error == asio::error::network_unreachable || error == asio::error::network_down ||
           error == asio::error::host_unreachable;
}

} // namespace

struct VoiceSocket::Impl {
    enum class Stage { idle, opening, open };

    Impl(asio::any_io_executor on, Request asked, Limits limited)
        : executor(std::move(on)), request(std::move(asked)), limits(limited),
          address(HostAddress::parse(request.host)) {}

    auto& socket() { return stream.next_layer().next_layer(); }
    std::string host() const { return address ? address->header() : request.host; }

    void cut() {
        isCut = true;
        lookup.cancel();
        error_code ignored;
        socket().close(ignored);
    }
    void limitSilence() {
        const auto limit = static_cast<unsigned>(
            std::chrono::ceil<std::chrono::milliseconds>(limits.unacknowledged).count());
        ::setsockopt(socket().native_handle(), IPPROTO_TCP, TCP_USER_TIMEOUT, &limit, sizeof limit);
    }
    bool canWrite() { return stage == Stage::open && !isCut && !isClosed && stream.is_open(); }

    std::string whyStopped() const {
        return isClosed ? "the session was closed" : host() + " did not answer in time";
    }
    Failure badHost() const { return {kErrorBadURL, oneLine("\"" + request.host + "\" is not a host")}; }
    Failure openingFailure(const std::string& what, const error_code& error) const;
    Failure receiveFailure(const error_code& error);

    asio::any_io_executor executor;
    Request request;
    Limits limits;
    std::optional<HostAddress> address;
    websocket::stream<asio::ssl::stream<tcp::socket>, false> stream{executor, TlsTrust::context()};
    HostLookup lookup{executor};
    beast::flat_buffer received;
    std::string repaired;
    Stage stage = Stage::idle;
    bool isClosed = false; ///< by us
    bool isCut = false;
    error_code sendError; ///< the reading side sees only that it was cut
    bool hasCloseFrame = false;
    bool isWriting = false;
    std::list<Waiter*> waiters;
};

/// A sender in the queue; lives in its coroutine.
struct VoiceSocket::Waiter {
    explicit Waiter(Impl& queue) : impl(queue), wake(queue.executor, asio::steady_timer::time_point::max()) {
        impl.waiters.push_back(this);
    }
    ~Waiter() { impl.waiters.remove(this); }
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

    Impl& impl;
    asio::steady_timer wake;
    bool hasTurn = false;
};

/// Cuts the connection unless it is let go in time.
class VoiceSocket::Watchdog {
  public:
    Watchdog(const std::shared_ptr<VoiceSocket>& socket, Clock::Duration duration)
        : Watchdog(socket, duration, [impl = socket->impl_.get()] { impl->cut(); }) {}
    Watchdog(const std::shared_ptr<VoiceSocket>& socket, Clock::Duration duration, std::function<void()> bark)
        : watch_(std::make_shared<Watch>()) {
        watch_->bark = std::move(bark);
        asio::co_spawn(socket->impl_->executor, run(watch_, socket, duration),
                       asio::bind_cancellation_slot(watch_->cancel.slot(), Ended{watch_}));
    }
    ~Watchdog() {
        watch_->bark = nullptr;
        if (watch_->isSleeping)
            watch_->cancel.emit(asio::cancellation_type::terminal);
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    struct Watch {
        std::function<void()> bark;
        asio::cancellation_signal cancel;
        bool isSleeping = false;
    };
    /// Keeps the signal for as long as the coroutine may look at its slot.
    struct Ended {
        std::shared_ptr<Watch> watch;
        void operator()(const std::exception_ptr&) const {}
    };
    /// Also reset when the coroutine is destroyed in its sleep, with its execution context.
    struct Sleeping {
        explicit Sleeping(Watch& watched) : watch(watched) { watch.isSleeping = true; }
        ~Sleeping() { watch.isSleeping = false; }
        Sleeping(const Sleeping&) = delete;
        Sleeping& operator=(const Sleeping&) = delete;
        Watch& watch;
    };

    /// Holds the socket, so that `bark` finds it.
    static asio::awaitable<void> run(std::shared_ptr<Watch> watch, std::shared_ptr<VoiceSocket> /*held*/,
                                     Clock::Duration duration) {
        if (!watch->bark)
            co_return;
        {
            const Sleeping sleeping(*watch);
            co_await Clock::shared().sleep(duration);
        }
        if (watch->bark)
            watch->bark();
    }

    std::shared_ptr<Watch> watch_;
};

Failure VoiceSocket::Impl::openingFailure(const std::string& what, const error_code& error) const {
    if (isCut || isClosed)
        return transportFailure(whyStopped());
    return transportFailure(what + ": " + error.message());
}

Failure VoiceSocket::Impl::receiveFailure(const error_code& error) {
    if (isClosed)
        return transportFailure(whyStopped());
    const auto& reason = stream.reason();
    if (reason.code != websocket::close_code::none) {
        const std::string text(reason.reason.data(), reason.reason.size());
        return transportFailure(host() + " closed the connection with code " +
                                std::to_string(static_cast<unsigned>(reason.code)) +
                                (text.empty() ? std::string() : ": " + text));
    }
    if (hasCloseFrame)
        return transportFailure(host() + " closed the connection without a code");
    if (error == websocket::error::message_too_big || error == websocket::error::buffer_overflow)
        return transportFailure(host() + " sent a message of more than " + std::to_string(limits.message) +
                                " bytes");
    if (error == asio::error::eof || error == asio::ssl::error::stream_errors::stream_truncated)
        return transportFailure(host() + " ended the connection without closing it");
    return transportFailure("the connection to " + host() +
                            " was lost: " + (sendError ? sendError : error).message());
}

std::shared_ptr<VoiceSocket> VoiceSocket::make(asio::any_io_executor executor, Request request,
                                               Limits limits) {
    return std::shared_ptr<VoiceSocket>(new VoiceSocket(std::move(executor), std::move(request), limits));
}

VoiceSocket::VoiceSocket(asio::any_io_executor executor, Request request, Limits limits)
    : impl_(std::make_unique<Impl>(std::move(executor), std::move(request), limits)) {}

VoiceSocket::~VoiceSocket() = default;

asio::awaitable<Result<>> VoiceSocket::open() {
    if (impl_->stage != Impl::Stage::idle || impl_->isClosed)
        co_return Failure{kErrorNotConnected, "the session was closed"};
    if (!impl_->address)
        co_return impl_->badHost();
    for (const auto& [name, value] : impl_->request.headers) {
        if (value.size() > kLongestField)
            co_return Failure{kErrorBadURL, "the field " + name + " would be " +
                                                std::to_string(value.size()) +
                                                " bytes long; is the key only the key?"};
        if (!isFieldValue(value))
            co_return Failure{kErrorBadURL, "the field " + name +
                                                " would hold a line break or another control "
                                                "character; is the key complete and on one line?"};
    }
    impl_->stage = Impl::Stage::opening;
    const auto self = shared_from_this();
    const Watchdog watchdog(self, impl_->limits.opening);
    auto opened = co_await openSteps();
    if (opened && !impl_->isCut && !impl_->isClosed)
        impl_->stage = Impl::Stage::open;
    else if (opened)
        opened = transportFailure(impl_->whyStopped());
    if (!opened)
        impl_->cut();
    co_return opened;
}

asio::awaitable<Result<>> VoiceSocket::openSteps() {
    const auto connected = co_await connectToHost();
    if (!connected)
        co_return connected.error();
    auto& stream = impl_->stream;
    auto& tls = stream.next_layer();
    error_code error;
    impl_->socket().set_option(tcp::no_delay(true), error);
    impl_->limitSilence();
    // Asio has OpenSSL free its record buffers whenever they are empty: one allocation for every message.
    SSL_clear_mode(tls.native_handle(), SSL_MODE_RELEASE_BUFFERS);
    if (!TlsTrust::expectHost(tls.native_handle(), *impl_->address))
        co_return impl_->badHost();
    co_await tls.async_handshake(asio::ssl::stream_base::client,
                                 asio::redirect_error(asio::use_awaitable, error));
    if (error) {
        const auto problem = TlsTrust::certificateProblem(tls.native_handle());
        if (!problem.empty() && !impl_->isCut)
            co_return transportFailure("the certificate of " + impl_->host() + " was refused: " + problem);
        co_return impl_->openingFailure("no secure connection to " + impl_->host(), error);
    }
    stream.set_option(websocket::stream_base::decorator([this](websocket::request_type& request) {
        request.set(beast::http::field::user_agent, "Velto");
        for (const auto& [name, value] : impl_->request.headers)
            request.set(name, value);
    }));
    stream.set_option(websocket::stream_base::timeout{websocket::stream_base::none(),
                                                      websocket::stream_base::none(), false});
    stream.read_message_max(impl_->limits.message);
    stream.auto_fragment(false);
    stream.write_buffer_bytes(kWriteBuffer);
    websocket::response_type response;
    const std::string hostField = impl_->address->header();
    co_await stream.async_handshake(response, hostField, impl_->request.target,
                                    asio::redirect_error(asio::use_awaitable, error));
    if (error == websocket::error::upgrade_declined)
        co_return transportFailure(impl_->host() + " refused the connection: HTTP " +
                                   std::to_string(response.result_int()) + " " +
                                   std::string(response.reason()));
    if (error)
        co_return impl_->openingFailure("no WebSocket connection to " + impl_->host(), error);
    // Bounds the closing handshake that the server begins; no idle time-out, which costs a timer per message.
    stream.set_option(websocket::stream_base::timeout{
        std::chrono::duration_cast<websocket::stream_base::duration>(impl_->limits.closing),
        websocket::stream_base::none(), false});
    // After a close frame the read may end with whatever the server's way of ending TLS gives.
    stream.control_callback([impl = impl_.get()](websocket::frame_type kind, beast::string_view) {
        impl->hasCloseFrame |= kind == websocket::frame_type::close;
    });
    stream.text(true);
    co_return Result<>();
}

asio::awaitable<Result<>> VoiceSocket::connectToHost() {
    const auto self = shared_from_this();
    const auto giveUp = Clock::shared().steadyNow() + impl_->limits.connectivity;
    for (;;) {
        const auto found = co_await impl_->lookup.resolve(*impl_->address);
        if (impl_->isCut)
            co_return transportFailure(impl_->whyStopped());
        bool mayPass = found.mayPass;
        std::string failure = "cannot find " + impl_->address->host + ": " + found.failure;
        for (std::size_t i = 0; i < found.endpoints.size(); ++i) {
            error_code error;
            impl_->socket().close(error);
            {
                const bool isLast = i + 1 == found.endpoints.size();
                const auto limit = isLast ? impl_->limits.opening : impl_->limits.address;
                const Watchdog watchdog(self, limit, [impl = impl_.get()] {
                    error_code ignored;
                    impl->socket().close(ignored);
                });
                co_await impl_->socket().async_connect(found.endpoints[i],
                                                       asio::redirect_error(asio::use_awaitable, error));
            }
            if (impl_->isCut)
                co_return transportFailure(impl_->whyStopped());
            if (!error)
                co_return Result<>();
            const bool isAbsent = isNetworkAbsent(error);
            if (i == 0 || !isAbsent)
                failure = "cannot connect to " + impl_->host() + ": " +
                          (error == asio::error::operation_aborted ? "no answer" : error.message());
            mayPass = isAbsent && (i == 0 || mayPass);
        }
        if (!mayPass || Clock::shared().steadyNow() >= giveUp)
            co_return transportFailure(failure);
        co_await Clock::shared().sleep(kConnectivityRetry);
        if (impl_->isCut)
            co_return transportFailure(impl_->whyStopped());
    }
}

VoiceSocket::Turn VoiceSocket::tryTurn() {
    if (impl_->isWriting || !impl_->canWrite())
        return Turn();
    impl_->isWriting = true;
    return Turn(shared_from_this());
}

asio::awaitable<VoiceSocket::Turn> VoiceSocket::turn(std::size_t waiting) {
    if (!impl_->isWriting || !impl_->canWrite() || impl_->waiters.size() >= waiting)
        co_return tryTurn();
    Waiter waiter(*impl_);
    error_code cancelled;
    co_await waiter.wake.async_wait(asio::redirect_error(asio::use_awaitable, cancelled));
    if (!waiter.hasTurn)
        co_return Turn();
    co_return Turn(shared_from_this());
}

void VoiceSocket::passTurn() {
    if (impl_->waiters.empty()) {
        impl_->isWriting = false;
        return;
    }
    Waiter* next = impl_->waiters.front();
    impl_->waiters.pop_front();
    next->hasTurn = true;
    next->wake.cancel();
}

asio::awaitable<Result<>> VoiceSocket::write(std::string_view message) {
    if (!impl_->canWrite())
        co_return Failure{kErrorNotConnected, "not connected"};
    error_code error;
    co_await impl_->stream.async_write(asio::buffer(message.data(), message.size()),
                                       asio::redirect_error(asio::use_awaitable, error));
    if (!error)
        co_return Result<>();
    // Half a frame may be out; if the stream is closing, the reading side knows why.
    impl_->sendError = error;
    if (impl_->stream.is_open())
        impl_->cut();
    co_return transportFailure("sending to " + impl_->host() + " failed: " + error.message());
}

asio::awaitable<Result<>> VoiceSocket::send(std::string message) {
    const auto mine = co_await turn(impl_->limits.waiting);
    if (!mine)
        co_return Failure{kErrorNotConnected, "not connected"};
    co_return co_await write(message);
}

asio::awaitable<Result<std::string_view>> VoiceSocket::receive() {
    if (impl_->stage != Impl::Stage::open)
        co_return Failure{kErrorNotConnected, "not connected"};
    auto& buffer = impl_->received;
    buffer.consume(buffer.size());
    if (buffer.capacity() > kBufferKept)
        buffer.shrink_to_fit();
    error_code error;
    co_await impl_->stream.async_read(buffer, asio::redirect_error(asio::use_awaitable, error));
    if (error) {
        auto failure = impl_->receiveFailure(error);
        impl_->cut();
        co_return failure;
    }
    std::string_view text(static_cast<const char*>(buffer.cdata().data()), buffer.size());
    if (impl_->stream.got_binary() && !isValidUtf8(text)) {
        impl_->repaired = repairedUtf8(text);
        text = impl_->repaired;
    }
    co_return text;
}

void VoiceSocket::close() {
    if (impl_->isClosed)
        return;
    const bool canShake = impl_->canWrite();
    impl_->isClosed = true;
    if (canShake)
        asio::co_spawn(impl_->executor, finishClosing(shared_from_this()), asio::detached);
    else
        impl_->cut();
}

asio::awaitable<void> VoiceSocket::finishClosing(std::shared_ptr<VoiceSocket> socket) {
    const Watchdog watchdog(socket, socket->impl_->limits.closing);
    error_code ignored;
    const websocket::close_reason normal(websocket::close_code::normal);
    co_await socket->impl_->stream.async_close(normal, asio::redirect_error(asio::use_awaitable, ignored));
    socket->impl_->cut();
}

void VoiceSocket::abort() {
    impl_->isClosed = true;
    impl_->cut();
}

bool VoiceSocket::isClosed() const {
    return impl_->isClosed;
}

} // namespace velto
