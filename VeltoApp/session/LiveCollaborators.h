// The real phone, sound, agent and history behind the call session.
#pragma once

#include "VeltoApp/session/SessionCollaborators.h"

namespace velto {

/// Over the installed platform; made on first use, alive until the process ends. Main thread.
SessionCollaborators liveCollaborators();

} // namespace velto
