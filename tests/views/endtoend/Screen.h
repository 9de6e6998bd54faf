// A person at a display without a screen: keyboard and pointer.
#pragma once

#include <string>

struct _XDisplay;

namespace velto::test {

/// One thread.
class Screen {
  public:
    /// `display` as in the variable DISPLAY; it must take XTEST events. Throws when it cannot be opened.
    explicit Screen(const std::string& display);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    enum class Button : unsigned { left = 1, right = 3, down = 5 };
    void click(double x, double y, Button button = Button::left);
    /// By its name among X11's key symbols, with another one held down.
    void key(const char* name, const char* held = nullptr);
    /// Characters of a keyboard for US English; a line end is the Return key.
    void type(const std::string& text);

  private:
    void press(unsigned long symbol, const char* held);

    _XDisplay* display_;
};

} // namespace velto::test
