// Internet date-time of ISO 8601 / RFC 3339 in UTC, whole seconds: 2026-11-16T20:23:20Z.
#pragma once

#include <chrono>
#include <string>

namespace velto {

std::string iso8601(std::chrono::system_clock::time_point time);

} // namespace velto
