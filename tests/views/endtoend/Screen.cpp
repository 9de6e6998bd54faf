#include "tests/views/endtoend/Screen.h"

#include <X11/XKBlib.h>

#include <X11/extensions/XTest.h>

#include <stdexcept>

namespace velto::test {

Screen::Screen(const std::string& display) : display_(::XOpenDisplay(display.c_str())) {
    if (display_ == nullptr)
        throw std::runtime_error("the display cannot be opened: " + display);
}

Screen::~Screen() {
    ::XCloseDisplay(display_);
}

void Screen::click(double x, double y, Button button) {
    ::XTestFakeMotionEvent(display_, -1, static_cast<int>(x), static_cast<int>(y), CurrentTime);
    for (const int down : {True, False})
        ::XTestFakeButtonEvent(display_, static_cast<unsigned>(button), down, CurrentTime);
    ::XSync(display_, False);
}

void Screen::press(unsigned long symbol, const char* held) {
    const auto send = [&](unsigned long key, int down) {
        ::XTestFakeKeyEvent(display_, ::XKeysymToKeycode(display_, key), down, CurrentTime);
    };
    if (held == nullptr &&
        ::XkbKeycodeToKeysym(display_, ::XKeysymToKeycode(display_, symbol), 0, 0) != symbol)
        held = "Shift_L";
    if (held != nullptr)
        send(::XStringToKeysym(held), True);
    send(symbol, True);
    send(symbol, False);
    if (held != nullptr)
        send(::XStringToKeysym(held), False);
    ::XSync(display_, False);
}

void Screen::key(const char* name, const char* held) {
    press(::XStringToKeysym(name), held);
}

void Screen::type(const std::string& text) {
    // The symbols of Latin characters have their numbers.
    for (const char letter : text)
        press(letter == '\n' ? ::XStringToKeysym("Return") : static_cast<unsigned char>(letter), nullptr);
}

} // namespace velto::test
