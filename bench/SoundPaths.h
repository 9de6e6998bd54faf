// How long sound is under way on each path of a call, and whether it arrives at its level.
#pragma once

#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseTaps.h"

namespace velto::bench {

/// Impulses that a phone app plays: to a speaker, heard there; to the loop device, heard from it; to the
/// speaker, heard from a tap, without and with mute. Prints medians, and what each path adds to the first.
/// Takes half a minute. The platform is installed; the default output is another one afterwards.
void printPaths(PulseServer& server, PulseTaps& taps);

/// The probe on both paths, as in the diagnostics.
void printProbes();

} // namespace velto::bench
