// What went wrong with a call, for those who do not read logs.
#pragma once

#include <string>
#include <vector>

namespace velto {

/// A sentence for the last line of the latest session in `log` that tells of a failure; empty when none does.
std::string sessionTrouble(const std::vector<std::string>& log);

} // namespace velto
