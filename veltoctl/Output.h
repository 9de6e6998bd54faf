// What the program prints: results on standard output, messages on standard error.
#pragma once

#include <string>
#include <string_view>

namespace velto::ctl {

/// The program's exits.
enum Exit : int {
    kDone = 0,    ///< done
    kRefused = 1, ///< the application said no
    kFailed = 2,  ///< the application is not running, or the command line makes no sense
};

/// Text that came from elsewhere, fit for a terminal: control characters other than line feed and tab become
/// U+FFFD, so that nobody on the line can drive the terminal.
std::string printable(std::string_view text);

/// Nothing is buffered: what was printed is on its way.
class Output {
  public:
    /// One line; false when standard output takes no more.
    bool line(std::string_view text);
    /// One line on standard error, behind the program's name.
    static void message(std::string_view text);

    /// `planned`, unless standard output failed: a reader who left early is fine, a full disk is not.
    int exitStatus(int planned) const;

  private:
    int error_ = 0;
};

} // namespace velto::ctl
