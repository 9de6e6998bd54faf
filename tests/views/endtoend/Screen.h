// A person at a display without a screen: keyboard, pointer, clipboard, and a look at it.
#pragma once

#include <filesystem>
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
    /// Characters of a keyboard for US English.
    void type(const std::string& text);
    /// Copies the text and presses Control-V, and hands the text over to whoever asks until `arrived`, which
    /// is asked again and again.
    template <class Arrived>
    bool paste(const std::string& text, const Arrived& arrived) {
        own();
        key("v", true);
        for (int look = 0; look < kLooks; ++look) {
            serve(text);
            if (arrived())
                return true;
        }
        return false;
    }
    /// The whole display as a PNG file.
    void takePicture(const std::filesystem::path& file);

  private:
    static constexpr int kLooks = 400;

    void press(unsigned long symbol, bool shifted, bool withControl);
    void own();
    void serve(const std::string& text);

    _XDisplay* display_;
    unsigned long clipboard_; ///< a window that nobody sees
};

} // namespace velto::test
