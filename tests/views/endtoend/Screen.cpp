#include "tests/views/endtoend/Screen.h"

#include <QImage>

#include <X11/Xlib.h>

#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <cctype>
#include <stdexcept>
#include <string_view>

namespace velto::test {
namespace {

constexpr std::string_view kShifted = "~!@#$%^&*()_+{}|:\"<>?";

} // namespace

Screen::Screen(const std::string& display) : display_(::XOpenDisplay(display.c_str())) {
    if (display_ == nullptr)
        throw std::runtime_error("the display cannot be opened: " + display);
}

Screen::~Screen() {
    ::XCloseDisplay(display_);
}

void Screen::click(double x, double y, Button button) {
    ::XTestFakeMotionEvent(display_, -1, static_cast<int>(x), static_cast<int>(y), CurrentTime);
    ::XTestFakeButtonEvent(display_, static_cast<unsigned>(button), True, CurrentTime);
    ::XTestFakeButtonEvent(display_, static_cast<unsigned>(button), False, CurrentTime);
    ::XSync(display_, False);
}

void Screen::press(unsigned long symbol, bool shifted, bool withControl) {
    const auto send = [&](unsigned long key, bool down) {
        ::XTestFakeKeyEvent(display_, ::XKeysymToKeycode(display_, key), down ? True : False, CurrentTime);
    };
    const auto shift = ::XStringToKeysym("Shift_L");
    const auto control = ::XStringToKeysym("Control_L");
    if (shifted)
        send(shift, true);
    if (withControl)
        send(control, true);
    send(symbol, true);
    send(symbol, false);
    if (withControl)
        send(control, false);
    if (shifted)
        send(shift, false);
    ::XSync(display_, False);
}

void Screen::key(const char* name, bool withControl) {
    press(::XStringToKeysym(name), false, withControl);
}

void Screen::type(const std::string& text) {
    // The symbols of Latin characters have their numbers.
    for (const char letter : text)
        press(letter == '\n' ? ::XStringToKeysym("Return") : static_cast<unsigned char>(letter),
              std::isupper(static_cast<unsigned char>(letter)) != 0 ||
                  kShifted.find(letter) != std::string_view::npos,
              false);
}

void Screen::paste(std::string text) {
    clipboard_.reset();
    clipboard_ = std::make_unique<Clipboard>(DisplayString(display_), std::move(text));
    key("v", true);
}

void Screen::takePicture(const std::filesystem::path& file) {
    const auto root = DefaultRootWindow(display_);
    const auto width = static_cast<unsigned>(DisplayWidth(display_, 0));
    const auto height = static_cast<unsigned>(DisplayHeight(display_, 0));
    auto* const shown = ::XGetImage(display_, root, 0, 0, width, height, AllPlanes, ZPixmap);
    if (shown == nullptr)
        return;
    const QImage picture(reinterpret_cast<const uchar*>(shown->data), shown->width, shown->height,
                         shown->bytes_per_line, QImage::Format_RGB32);
    picture.save(QString::fromStdString(file.string()));
    XDestroyImage(shown);
}

} // namespace velto::test
