// What it means when pkexec ends without having started the program.
#pragma once

#include <cstdint>
#include <string>

namespace velto {

struct PkexecEnd {
    std::int32_t status; ///< as in AdminStatus
    std::string trouble; ///< for the log: what happened and what to do about it
};

/// `exitStatus`: its exit code, or 128 + the number of a signal. `said`: its standard error, in the C locale.
PkexecEnd explainPkexec(std::int32_t exitStatus, const std::string& said);

} // namespace velto
