// What a process costs, from /proc.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>

namespace velto::rehearsal {

struct ProcessUsage {
    double cpuSeconds = 0; ///< user and system, since its start
    double residentMB = 0; ///< 10⁶ bytes
    std::chrono::steady_clock::time_point at;
};

/// None when there is no such process.
std::optional<ProcessUsage> processUsage(pid_t pid);

/// Share of one core between two readings, percent.
double cpuPercent(const ProcessUsage& from, const ProcessUsage& to);

} // namespace velto::rehearsal
