// What the voice benchmark measures with, and how it prints it.
#pragma once

#include <string>
#include <vector>

namespace velto::bench {

/// For what must not happen: there is no figure without it.
[[noreturn]] void giveUp(const std::string& why);

/// The calling thread's own CPU time, so that a server in the same process is not counted.
double threadMicroseconds();

/// One figure over several rounds.
struct Figure {
    double median = 0;
    double least = 0;
    double most = 0;
};

/// Of at least one round.
Figure figureOf(std::vector<double> rounds);

/// "43.2 us (42.9 to 44.0)".
std::string microseconds(const Figure& figure);

} // namespace velto::bench
