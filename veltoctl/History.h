// Finished calls, from the application or from its history file.
#pragma once

#include "veltoctl/Commands.h"

namespace velto::ctl::History {

/// The application's reply; without one, what the history file holds, in the same form. None, with a message,
/// when the file cannot be understood. `last` other than 0 keeps so many.
std::optional<boost::json::object> calls(int last);

/// Prints the one call whose identifier begins with the given text, whatever its case.
int show(const Arguments& arguments, Output& output);

} // namespace velto::ctl::History
