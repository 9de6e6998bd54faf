// Runs one command.
#pragma once

#include "veltoctl/Output.h"

#include <boost/json/object.hpp>

#include <optional>
#include <string>

namespace velto::ctl {

struct Arguments {
    std::string command; ///< as the application knows it, or "wait", "history show", "doctor", "key set", …
    std::optional<std::string> number;
    std::optional<std::string> goal;
    std::string id;       ///< of a call, or its beginning
    std::string provider; ///< whose key is meant
    int last = 0;         ///< calls to list; 0: all
    bool follow = false;
    bool hangUpOnInterrupt = false;
    bool online = false;
    bool json = false;
};

/// Whether the command needs more of this computer than folders and the control socket: it is run in a
/// program of its own because of the libraries that it brings.
bool isLocal(const Arguments& arguments);

/// Of those that are not local. Answers the program's exit.
int run(const Arguments& arguments, Output& output);

} // namespace velto::ctl
