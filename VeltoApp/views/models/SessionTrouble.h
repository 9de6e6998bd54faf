// What went wrong with a call, for those who do not read logs.
#pragma once

#include <string>
#include <vector>

namespace velto {

/// A sentence for the first failure of the latest session in `log`, or for why it was not started; empty when
/// all went well.
std::string sessionTrouble(const std::vector<std::string>& log);

} // namespace velto
