// What a rehearsal starts of other packages' programs.
#pragma once

#include "rehearsal/PrivateSoundServer.h"

#include <string>

namespace velto::rehearsal {

/// Empty when everything is there that a rehearsal cannot do without; else a sentence that names all that is
/// missing with the Debian packages that bring it.
std::string missingPrograms(SoundServerKind sound);

/// PulseAudio, unless only PipeWire with all that it takes is installed.
SoundServerKind installedSoundServer();

} // namespace velto::rehearsal
