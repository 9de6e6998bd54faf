// What the doctor looks at, one function a subject.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace velto::ctl {

struct Finding {
    enum class Is {
        well,
        advice,  ///< not well, but a call can be placed
        missing, ///< no call without it
        unknown  ///< it could not be looked at
    };
    Is is = Is::well;
    std::string what;     ///< how it is, for people
    std::string remedy{}; ///< the one thing to do
};

struct Check {
    const char* id;    ///< for programs
    const char* title; ///< for people
    std::function<Finding()> look;
};

/// In the order of their lines.
std::vector<Check> checks(bool online);

} // namespace velto::ctl
