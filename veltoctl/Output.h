// What the program prints: results on standard output, messages on standard error.
#pragma once

#include <string>
#include <string_view>

namespace velto::ctl {

/// The program's exits.
enum Exit : int {
    kDone = 0,    ///< done
    kRefused = 1, ///< the application said no, the session ended in error, or something is missing
    kFailed = 2, ///< the application is not running, the command line makes no sense, or it could not be done
    kNothing = 3, ///< no session has run
    kGone = 4,    ///< the application went away while it was waited for
};

/// Text that came from elsewhere, fit for a terminal: control characters other than line feed and tab become
/// U+FFFD, so that nobody on the line can drive the terminal.
std::string printable(std::string_view text);

/// Nothing is buffered: what was printed is on its way.
class Output {
  public:
    bool quiet = false;

    /// One line; false when standard output takes no more.
    bool line(std::string_view text);
    /// One line on standard error, behind the program's name.
    static void message(std::string_view text);
    /// A message that says only how things go; not when `quiet`.
    void remark(std::string_view text) const;
    /// Whether somebody may still read standard output.
    bool isRead() const;
    /// Whether standard output is a terminal that shows colours, and the user wants them (no-color.org).
    static bool isColoured();

    /// `planned`, unless standard output failed: a reader who left early is fine, a full disk is not.
    int exitStatus(int planned) const;

  private:
    int error_ = 0;
};

} // namespace velto::ctl
