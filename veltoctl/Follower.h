// Follows the running session until it ends.
#pragma once

#include "veltoctl/Commands.h"
#include "veltoctl/TranscriptPrinter.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velto::ctl {

/// With `json`, the object that ends what is followed.
void tellOutcome(Output& output, const Arguments& arguments, const char* outcome);

/// Looks every 0.3 s, one connection a request. For people, changes of state are messages and the transcript
/// is the result, in lines that are only appended. With `json` everything is a result, one object a line:
/// {"state":…,"session":…,"number":…} for each state, {"line":…} once for each line that is final, and
/// {"outcome":…} at the end.
class Follower {
  public:
    enum class Show { everything, nothing };
    Follower(Output& output, const Arguments& arguments, Show show);

    /// Blocks until the session is over, the application is gone or nobody reads standard output any more;
    /// answers the program's exit. Without a session under way it shows the last one.
    int run();

  private:
    /// None when the session is still under way.
    std::optional<int> look();
    void tellState(const boost::json::object& status);
    bool printTranscript(bool final);
    int end(const char* outcome, int exit);
    int gone();
    int outcome();

    Output& output_;
    const Arguments& arguments_;
    Show show_;
    TranscriptPrinter printer_;
    std::string state_;
    std::optional<std::int64_t> session_;
};

} // namespace velto::ctl
