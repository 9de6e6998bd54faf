// The user's local time in the names of files.
#pragma once

#include "VeltoShared/core/Clock.h"

#include <string>

namespace velto {

/// "yyyyMMdd-HHmmss" in the computer's time zone. Any thread.
std::string localTimestamp(Clock::WallTime time);

} // namespace velto
