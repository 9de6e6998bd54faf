// The phone app of a simulated desktop.
#include "rehearsal/application/LineDesktop.h"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/json.hpp>

#include <sys/socket.h>

#include <algorithm>

namespace velto::rehearsal {
namespace {

constexpr auto kAnswer = asio::as_tuple(asio::use_awaitable);
constexpr std::string_view kScheme = "tel-phoneapp:";
constexpr const char* kPhoneApp = "com.apple.mobilephone";
constexpr const char* kNotificationCenter = "com.apple.notificationcenterui";
constexpr std::size_t kLongestLine = 65536;

/// Who made the socket at the other end listen.
pid_t peerOf(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

std::string clockText(long seconds) {
    const auto rest = std::to_string(seconds % 60);
    return std::to_string(seconds / 60) + ":" + (rest.size() < 2 ? "0" : "") + rest;
}

} // namespace

std::shared_ptr<LineDesktop> LineDesktop::connect(SimulatedDesktop& desktop,
                                                  const asio::any_io_executor& executor,
                                                  const std::string& socketPath) {
    Socket socket(executor);
    boost::system::error_code error;
    socket.connect(asio::local::stream_protocol::endpoint(socketPath), error);
    if (error)
        return nullptr;
    std::shared_ptr<LineDesktop> line(new LineDesktop(desktop, std::move(socket)));
    line->start();
    return line;
}

LineDesktop::LineDesktop(SimulatedDesktop& desktop, Socket socket)
    : desktop_(desktop), socket_(std::move(socket)) {}

void LineDesktop::start() {
    window_ = desktop_.launch(kNotificationCenter)->add({.role = "AXWindow", .title = "Notification Center"});
    desktop_.launch(kPhoneApp, peerOf(socket_.native_handle()))
        ->add({.role = "AXWindow", .title = "Phone"})
        ->addText("Recents");
    desktop_.onOpenURL([weak = weak_from_this()](const std::string& url) {
        const auto self = weak.lock();
        return self && self->open(url);
    });
    asio::co_spawn(socket_.get_executor(), read(), asio::detached);
}

bool LineDesktop::open(const std::string& url) {
    if (!url.starts_with(kScheme))
        return false;
    asio::post(socket_.get_executor(), [self = shared_from_this(), number = url.substr(kScheme.size())] {
        if (!self->inCall_)
            self->offer(number);
    });
    return true;
}

std::function<void()> LineDesktop::later(void (LineDesktop::*work)()) {
    return [weak = weak_from_this(), work] {
        if (const auto self = weak.lock())
            asio::post(self->socket_.get_executor(), [self, work] { (self.get()->*work)(); });
    };
}

void LineDesktop::offer(const std::string& number) {
    if (banner_)
        banner_->remove();
    number_ = number;
    banner_ = window_->add({.role = "AXGroup", .description = "Phone"});
    banner_->addText("Phone");
    status_ = banner_->addText(number);
    banner_->addButton("Call", later(&LineDesktop::showCall));
    banner_->addButton("Close");
}

void LineDesktop::showCall() {
    if (inCall_ || lost_)
        return;
    inCall_ = true;
    ++call_;
    banner_->clear();
    banner_->addText("Phone");
    banner_->addText(number_);
    status_ = banner_->addText("Calling…");
    banner_->addButton("End", [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            asio::post(self->socket_.get_executor(), [self] { self->send({{"line", "hangup"}}); });
    });
    send({{"line", "dial"}, {"number", number_}});
}

void LineDesktop::answered() {
    if (!inCall_)
        return;
    status_->set(Attribute::value, clockText(0));
    asio::co_spawn(socket_.get_executor(), countSeconds(call_), asio::detached);
}

asio::awaitable<void> LineDesktop::countSeconds(unsigned call) {
    const auto self = shared_from_this();
    for (long seconds = 1;; ++seconds) {
        co_await Clock::shared().sleep(std::chrono::seconds(1));
        if (call_ != call || !inCall_)
            co_return;
        status_->set(Attribute::value, clockText(seconds));
    }
}

void LineDesktop::ended() {
    inCall_ = false;
    status_.reset();
    if (const auto banner = std::exchange(banner_, nullptr))
        banner->remove();
}

void LineDesktop::received(const boost::json::object& message) {
    const auto* what = message.if_contains("line");
    if (what == nullptr)
        return;
    if (*what == "answered")
        answered();
    else if (*what == "ended")
        ended();
}

asio::awaitable<void> LineDesktop::read() {
    const auto self = shared_from_this();
    std::string buffer;
    while (true) {
        const auto [error, count] = co_await asio::async_read_until(
            socket_, asio::dynamic_buffer(buffer, kLongestLine), '\n', kAnswer);
        boost::system::error_code broken;
        const auto value = error ? boost::json::value()
                                 : boost::json::parse(std::string_view(buffer).substr(0, count), broken);
        if (error || broken || !value.is_object())
            break;
        buffer.erase(0, count);
        received(value.get_object());
    }
    lost_ = true;
    ended();
}

void LineDesktop::send(const boost::json::object& message) {
    queue_.push_back(boost::json::serialize(message) + "\n");
    if (!std::exchange(writing_, true))
        asio::co_spawn(socket_.get_executor(), write(), asio::detached);
}

asio::awaitable<void> LineDesktop::write() {
    const auto self = shared_from_this();
    while (!queue_.empty()) {
        const auto line = std::move(queue_.front());
        queue_.pop_front();
        const auto [error, count] = co_await asio::async_write(socket_, asio::buffer(line), kAnswer);
        if (error)
            break;
    }
    writing_ = false;
}

} // namespace velto::rehearsal
