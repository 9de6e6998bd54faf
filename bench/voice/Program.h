// Another program, run to its end.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace velto::bench {

struct Finished {
    int code = -1; ///< of its exit; -1 when it did not end by itself in time
    std::vector<std::string> lines;
};

/// With this process's environment and `more`, and its standard error. The first argument is the program.
Finished runProgram(std::vector<std::string> arguments, const std::map<std::string, std::string>& more,
                    std::chrono::seconds limit);

} // namespace velto::bench
