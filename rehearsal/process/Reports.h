// How the programs of a rehearsal tell the director what happens: one JSON object a line on standard output.
#pragma once

#include <boost/json/object.hpp>

#include <functional>

namespace velto::rehearsal {

/// Takes an object with the text "event".
using Report = std::function<void(boost::json::object)>;

/// Writes the line at once. Any thread; lines stay whole.
void reportToStandardOutput(const boost::json::object& report);

/// Time of the one monotonic clock that all programs on a computer share, ns.
std::chrono::nanoseconds monotonicNow();

} // namespace velto::rehearsal
