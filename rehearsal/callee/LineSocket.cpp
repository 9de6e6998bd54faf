// The phone's line as a local socket.
#include "rehearsal/callee/LineSocket.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

namespace asio = boost::asio;
constexpr auto kAnswer = asio::as_tuple(asio::use_awaitable);
constexpr std::size_t kLongestLine = 65536;

} // namespace

LineSocket::LineSocket(const asio::any_io_executor& executor, const std::string& path, Callbacks callbacks)
    : acceptor_(executor, Protocol::endpoint(path)), callbacks_(std::move(callbacks)) {}

asio::awaitable<void> LineSocket::serve() {
    while (true) {
        auto [error, socket] = co_await acceptor_.async_accept(kAnswer);
        if (error)
            co_return;
        const auto peer = std::make_shared<Protocol::socket>(std::move(socket));
        peer_ = peer;
        co_await read(peer);
        peer_.reset();
        queue_.clear();
        callbacks_.lost();
    }
}

asio::awaitable<void> LineSocket::read(Peer peer) {
    std::string buffer;
    while (true) {
        const auto [error, count] =
            co_await asio::async_read_until(*peer, asio::dynamic_buffer(buffer, kLongestLine), '\n', kAnswer);
        if (error)
            co_return;
        boost::system::error_code broken;
        const auto value = boost::json::parse(std::string_view(buffer).substr(0, count), broken);
        buffer.erase(0, count);
        if (broken || !value.is_object())
            co_return;
        callbacks_.received(value.get_object());
    }
}

void LineSocket::send(const boost::json::object& message) {
    if (!peer_)
        return;
    queue_.push_back(boost::json::serialize(message) + "\n");
    if (!std::exchange(writing_, true))
        asio::co_spawn(acceptor_.get_executor(), write(peer_), asio::detached);
}

asio::awaitable<void> LineSocket::write(Peer peer) {
    while (!queue_.empty()) {
        const auto line = std::move(queue_.front());
        queue_.pop_front();
        const auto [error, count] = co_await asio::async_write(*peer, asio::buffer(line), kAnswer);
        if (error)
            break;
    }
    writing_ = false;
}

} // namespace velto::rehearsal
