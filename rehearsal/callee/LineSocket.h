// The phone's line as a local socket: one JSON object a line each way.
#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/json/object.hpp>

#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace velto::rehearsal {

/// The callee's end. Serves one desktop at a time; the next may come when it has gone. One thread: that of
/// the executor.
class LineSocket {
  public:
    struct Callbacks {
        std::function<void(const boost::json::object&)> received;
        std::function<void()> lost; ///< the desktop has gone
    };

    /// Throws boost::system::system_error when the socket cannot be made at this path.
    LineSocket(const boost::asio::any_io_executor& executor, const std::string& path, Callbacks callbacks);

    boost::asio::awaitable<void> serve();
    /// Drops the object when no desktop is there.
    void send(const boost::json::object& message);

  private:
    using Protocol = boost::asio::local::stream_protocol;
    using Peer = std::shared_ptr<Protocol::socket>;

    boost::asio::awaitable<void> read(Peer peer);
    boost::asio::awaitable<void> write(Peer peer);

    Protocol::acceptor acceptor_;
    Callbacks callbacks_;
    Peer peer_;
    std::deque<std::string> queue_;
    bool writing_ = false;
};

} // namespace velto::rehearsal
