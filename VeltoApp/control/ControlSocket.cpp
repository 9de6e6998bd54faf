// Coroutines on the background thread, one that accepts and one a connection.
#include "VeltoApp/control/ControlSocket.h"

#include "VeltoApp/control/ControlCommands.h"
#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Executors.h"

#include <boost/asio/associated_executor.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/write.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <sys/socket.h>

#include <cerrno>
#include <list>
#include <optional>
#include <string>

namespace velto {
namespace {

namespace json = boost::json;
using Protocol = asio::local::stream_protocol;
using boost::system::error_code;

constexpr std::size_t kReadSize = 65'536;
/// Reads of one connection before the others and the voice session have their turn.
constexpr int kReadsInARow = 4;
constexpr std::size_t kDeepestRequest = 512;
constexpr std::chrono::milliseconds kPauseWithoutDescriptors{100};

std::optional<json::object> parsed(const std::string& text) {
    json::parse_options options;
    options.max_depth = kDeepestRequest;
    error_code error;
    auto value = json::parse(text, error, {}, options);
    if (error || !value.is_object())
        return std::nullopt;
    return std::move(value.get_object());
}

/// Runs the handler on the main thread and resumes the coroutine where it was.
asio::awaitable<json::object> askMainThread(const ControlSocket::Handler& handler, json::object request) {
    co_return co_await asio::async_initiate<const asio::use_awaitable_t<>, void(json::object)>(
        [&handler, &request](auto resume) {
            auto executor = asio::get_associated_executor(resume);
            MainThread::post(
                [&handler, executor, resume = std::move(resume), request = std::move(request)]() mutable {
                    auto reply = handler(request);
                    asio::post(executor, [resume = std::move(resume), reply = std::move(reply)]() mutable {
                        std::move(resume)(std::move(reply));
                    });
                });
        },
        asio::use_awaitable);
}

} // namespace

class ControlSocket::Server : public std::enable_shared_from_this<Server> {
  public:
    Server(int listener, Handler handler, Limits limits)
        : acceptor_(Background::executor(), Protocol(), listener), handler_(std::move(handler)),
          limits_(limits) {}

    static asio::awaitable<void> accept(std::shared_ptr<Server> server) {
        for (;;) {
            error_code error;
            co_await server->acceptor_.async_wait(Protocol::acceptor::wait_read,
                                                  asio::redirect_error(asio::use_awaitable, error));
            if (error)
                co_return;
            if (!server->acceptWaiting()) {
                server->closeOldest();
                co_await Clock::shared().sleep(kPauseWithoutDescriptors);
            }
        }
    }

    void close() {
        error_code ignored;
        acceptor_.close(ignored);
        for (auto* connection : connections_)
            connection->socket.close(ignored);
    }

  private:
    struct Connection {
        Connection(std::shared_ptr<Server> owner, int fd)
            : server(std::move(owner)), socket(server->acceptor_.get_executor(), Protocol(), fd) {
            socket.non_blocking(true);
            place = server->connections_.insert(server->connections_.end(), this);
        }
        ~Connection() {
            server->connections_.erase(place);
            forgetRequest();
        }
        Connection(const Connection&) = delete;
        Connection& operator=(const Connection&) = delete;

        void forgetRequest() {
            server->held_ -= request.size();
            std::string().swap(request); // an assignment would keep the memory
        }

        std::shared_ptr<Server> server;
        Protocol::socket socket;
        std::string request;
        std::list<Connection*>::iterator place;
    };

    enum class Received { whole, tooLong };

    /// False when the process or the system has no descriptor or memory left.
    bool acceptWaiting() {
        for (;;) {
            const int fd =
                ::accept4(acceptor_.native_handle(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
            if (fd >= 0) {
                if (connections_.size() >= limits_.connections)
                    closeOldest();
                Background::spawn(serve(std::make_unique<Connection>(shared_from_this(), fd)));
                continue;
            }
            if (errno == EINTR || errno == ECONNABORTED)
                continue;
            return errno == EAGAIN || errno == EWOULDBLOCK;
        }
    }

    void closeOldest() {
        for (auto* connection : connections_) {
            if (!connection->socket.is_open())
                continue;
            error_code ignored;
            connection->socket.close(ignored);
            return;
        }
    }

    static asio::awaitable<void> serve(std::unique_ptr<Connection> connection) {
        try {
            co_await answer(*connection);
        } catch (const std::exception&) {
            // Out of memory for this request: its client finds the connection closed.
        }
    }

    static asio::awaitable<void> answer(Connection& connection) {
        const auto received = co_await receive(connection);
        std::optional<json::object> request;
        if (received == Received::whole)
            request = parsed(connection.request);
        connection.forgetRequest();
        json::object reply;
        if (request)
            reply = co_await askMainThread(connection.server->handler_, std::move(*request));
        else
            reply = ControlCommands::failure("bad request");
        co_await send(connection, reply);
        if (received == Received::tooLong)
            co_await discard(connection);
    }

    static asio::awaitable<Received> receive(Connection& connection) {
        auto& server = *connection.server;
        for (int reads = 1;; ++reads) {
            error_code error;
            const auto count = connection.socket.read_some(asio::buffer(server.scratch_), error);
            if (error == asio::error::would_block) {
                co_await waitToRead(connection);
                continue;
            }
            if (error)
                co_return Received::whole;
            if (connection.request.size() + count > server.limits_.request ||
                server.held_ + count > server.limits_.allRequests)
                co_return Received::tooLong;
            connection.request.append(server.scratch_.data(), count);
            server.held_ += count;
            if (connection.request.back() == '\n')
                co_return Received::whole;
            if (reads % kReadsInARow == 0)
                co_await letOthersWork(connection);
        }
    }

    static asio::awaitable<void> discard(Connection& connection) {
        error_code error;
        connection.socket.shutdown(Protocol::socket::shutdown_send, error);
        for (int reads = 1;; ++reads) {
            connection.socket.read_some(asio::buffer(connection.server->scratch_), error);
            if (error == asio::error::would_block)
                co_await waitToRead(connection);
            else if (error)
                co_return;
            else if (reads % kReadsInARow == 0)
                co_await letOthersWork(connection);
        }
    }

    static asio::awaitable<void> send(Connection& connection, const json::object& reply) {
        const auto line = json::serialize(reply) + '\n';
        error_code ignored;
        co_await asio::async_write(connection.socket, asio::buffer(line),
                                   asio::redirect_error(asio::use_awaitable, ignored));
    }

    static asio::awaitable<void> waitToRead(Connection& connection) {
        error_code ignored; // a read will tell
        co_await connection.socket.async_wait(Protocol::socket::wait_read,
                                              asio::redirect_error(asio::use_awaitable, ignored));
    }

    static asio::awaitable<void> letOthersWork(Connection& connection) {
        co_await asio::post(connection.socket.get_executor(), asio::use_awaitable);
    }

    Protocol::acceptor acceptor_;
    Handler handler_;
    Limits limits_;
    std::list<Connection*> connections_; ///< oldest first
    std::size_t held_ = 0;               ///< bytes of requests under way
    std::array<char, kReadSize> scratch_{};
};

ControlSocket::ControlSocket(int listener, Handler handler, Limits limits)
    : server_(std::make_shared<Server>(listener, std::move(handler), limits)) {
    Background::spawn(Server::accept(server_));
}

ControlSocket::~ControlSocket() {
    Background::post([server = server_] { server->close(); });
}

} // namespace velto
