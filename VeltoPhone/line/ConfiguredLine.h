// The line that this computer's user has: which one it is, is the environment's word.
#pragma once

#include "VeltoPhone/line/Line.h"
#include "VeltoShared/core/Result.h"

#include <memory>

namespace velto::phone {

/// VELTO_PHONE_LINE says which: "rehearsal:SCENARIO", the path of a scenario's file; its reports go to the
/// stream socket that VELTO_REHEARSAL_REPORTS names. A failure says why there is no line.
Result<std::unique_ptr<Line>> configuredLine();

} // namespace velto::phone
