// The phone app of a simulated desktop: it shows the call banner and owns the line to the callee.
#pragma once

#include "VeltoPlatform/simulated/SimulatedDesktop.h"
#include "VeltoShared/core/Clock.h"

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/json/object.hpp>

#include <deque>
#include <memory>
#include <string>

namespace velto::rehearsal {

/// Opening "tel-phoneapp:NUMBER" shows a banner with the button "Call" in Notification Center; pressing it
/// dials. While it rings and while it is answered the banner has the button "End", which hangs up; it reads
/// "Calling…", and the running time ("0:07") once the call is answered. When the line has ended the banner is
/// gone. The phone app has the process identifier of whoever listens on the line's socket, so that the sound
/// server's word on that process is the phone app's.
///
/// Runs on `executor`, which must be one thread, and not the main thread of an application that presses
/// buttons while it blocks. The desktop must outlive it; URLs and presses may come on any thread.
class LineDesktop : public std::enable_shared_from_this<LineDesktop> {
  public:
    /// None when nobody listens on the socket.
    static std::shared_ptr<LineDesktop>
    connect(SimulatedDesktop& desktop, const asio::any_io_executor& executor, const std::string& socketPath);

  private:
    using Socket = asio::local::stream_protocol::socket;

    LineDesktop(SimulatedDesktop& desktop, Socket socket);
    void start();
    asio::awaitable<void> read();
    asio::awaitable<void> write();
    asio::awaitable<void> countSeconds(unsigned call);
    void send(const boost::json::object& message);
    void received(const boost::json::object& message);

    bool open(const std::string& url);
    void offer(const std::string& number);
    void showCall();
    void answered();
    void ended();
    /// Runs work later on the executor, unless this is gone.
    std::function<void()> later(void (LineDesktop::*work)());

    SimulatedDesktop& desktop_;
    Socket socket_;
    std::deque<std::string> queue_;
    bool writing_ = false;
    bool lost_ = false;
    bool inCall_ = false;
    SimulatedElementRef window_; ///< of Notification Center
    SimulatedElementRef banner_;
    SimulatedElementRef status_; ///< the banner's text on the state of the call
    std::string number_;
    unsigned call_ = 0;
};

} // namespace velto::rehearsal
