// A program without a display ends with a sentence.
#pragma once

#include <string>

namespace velto {

/// Around the making of the application object. Qt ends the process with a core dump where it finds no
/// display; so it ends with status 1 and, on standard error, `prefix` and the reason. One at a time.
class DisplayGuard {
  public:
    explicit DisplayGuard(std::string prefix);
    ~DisplayGuard();
    DisplayGuard(const DisplayGuard&) = delete;
    DisplayGuard& operator=(const DisplayGuard&) = delete;
};

} // namespace velto
