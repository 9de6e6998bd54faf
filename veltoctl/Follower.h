// Follows the running session until it ends.
#pragma once

#include "veltoctl/TranscriptPrinter.h"

#include <boost/json/object.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace velto::ctl {

class Output;

/// Looks every 0.3 s, one connection a request. Changes of state are messages, the transcript is the result:
/// as lines that are only appended, or as JSON one reply object a line whenever the transcript has changed.
class Follower {
  public:
    Follower(Output& output, bool json);

    /// Blocks until the session is over, the application is gone or standard output takes no more; answers
    /// the program's exit. Without a session under way it prints the transcript that there is.
    int run();

  private:
    /// None when the session is still under way.
    std::optional<int> look();
    bool printTranscript(bool final);

    Output& output_;
    bool json_;
    bool writable_ = true;
    TranscriptPrinter printer_;
    std::string state_;
    std::optional<std::int64_t> session_;
    std::optional<std::string> printedJSON_;
};

} // namespace velto::ctl
