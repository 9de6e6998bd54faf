// Runs one command against the application.
#pragma once

#include "veltoctl/Output.h"

#include <optional>
#include <string>

namespace velto::ctl {

struct Arguments {
    std::string command; ///< as the application knows it: "ping", "status", …
    std::optional<std::string> number;
    std::optional<std::string> goal;
    bool follow = false;
    bool json = false;
};

/// Answers the program's exit.
int run(const Arguments& arguments, Output& output);

} // namespace velto::ctl
