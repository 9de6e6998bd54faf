// What went wrong with a call, for those who do not read logs.
#pragma once

#include "VeltoApp/session/NativeCallSession.h"

#include <string>

namespace velto {

/// A sentence; empty when nothing went wrong.
std::string sessionTrouble(const NativeCallSession::Failure& failure);

} // namespace velto
