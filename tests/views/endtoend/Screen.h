// A person at a display without a screen: keyboard, pointer, clipboard, and a look at it.
#pragma once

#include "tests/views/endtoend/Clipboard.h"

#include <filesystem>
#include <memory>
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
    /// By its name among X11's key symbols, with or without the Control key held down.
    void key(const char* name, bool withControl = false);
    /// Characters of a keyboard for US English; a line end is the Return key.
    void type(const std::string& text);
    /// Copies the text, as another program would, and presses Control-V.
    void paste(std::string text);
    /// The whole display as a PNG file.
    void takePicture(const std::filesystem::path& file);

  private:
    void press(unsigned long symbol, bool shifted, bool withControl);

    _XDisplay* display_;
    std::unique_ptr<Clipboard> clipboard_;
};

} // namespace velto::test
