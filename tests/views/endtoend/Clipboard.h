// Another program that has copied something.
#pragma once

#include <atomic>
#include <string>
#include <thread>

struct _XDisplay;

namespace velto::test {

/// Has the clipboard from its construction to its end, and answers whoever asks at once, on a thread and a
/// connection of its own: programs that paste wait for it.
class Clipboard {
  public:
    /// Throws when the display cannot be opened.
    Clipboard(const std::string& display, std::string text);
    ~Clipboard();
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;

  private:
    void serve();
    void answer();

    const std::string text_;
    _XDisplay* display_;
    std::atomic<bool> over_{false};
    std::thread thread_;
};

} // namespace velto::test
