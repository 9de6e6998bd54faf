#include "tests/views/endtoend/Clipboard.h"

#include <X11/Xlib.h>

#include <X11/Xatom.h>

#include <poll.h>

#include <stdexcept>

namespace velto::test {
namespace {

constexpr int kPatience = 20; // ms, until it looks whether it is over

} // namespace

Clipboard::Clipboard(const std::string& display, std::string text)
    : text_(std::move(text)), display_(::XOpenDisplay(display.c_str())) {
    if (display_ == nullptr)
        throw std::runtime_error("the display cannot be opened: " + display);
    const auto window = ::XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1, 1, 0, 0, 0);
    ::XSetSelectionOwner(display_, ::XInternAtom(display_, "CLIPBOARD", False), window, CurrentTime);
    ::XSync(display_, False);
    thread_ = std::thread([this] { serve(); });
}

Clipboard::~Clipboard() {
    over_ = true;
    thread_.join();
    ::XCloseDisplay(display_);
}

void Clipboard::serve() {
    while (!over_) {
        pollfd connection{ConnectionNumber(display_), POLLIN, 0};
        if (::XPending(display_) == 0)
            ::poll(&connection, 1, kPatience);
        while (::XPending(display_) > 0)
            answer();
    }
}

void Clipboard::answer() {
    XEvent event;
    ::XNextEvent(display_, &event);
    if (event.type != SelectionRequest)
        return;
    const auto plain = ::XInternAtom(display_, "UTF8_STRING", False);
    const auto& asked = event.xselectionrequest;
    XEvent answer{};
    answer.xselection = {
        SelectionNotify, 0,         True, display_, asked.requestor, asked.selection, asked.target,
        asked.property,  asked.time};
    if (asked.target == ::XInternAtom(display_, "TARGETS", False))
        ::XChangeProperty(display_, asked.requestor, asked.property, XA_ATOM, 32, PropModeReplace,
                          reinterpret_cast<const unsigned char*>(&plain), 1);
    else if (asked.target == plain)
        ::XChangeProperty(display_, asked.requestor, asked.property, plain, 8, PropModeReplace,
                          reinterpret_cast<const unsigned char*>(text_.data()),
                          static_cast<int>(text_.size()));
    else
        answer.xselection.property = None;
    ::XSendEvent(display_, asked.requestor, False, 0, &answer);
    ::XFlush(display_);
}

} // namespace velto::test
