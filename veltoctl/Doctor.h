// Looks for everything that a call needs.
#pragma once

#include "veltoctl/Commands.h"

namespace velto::ctl {

/// One line a check, in a fixed order, whatever the order of their ends: all run at the same time, and one
/// that takes too long counts as not known. Changes nothing and asks nobody; keys leave the computer only
/// when `online`. The process must end with `_exit` afterwards: a check may still hang.
int doctor(const Arguments& arguments, Output& output);

} // namespace velto::ctl
