// What the muted taps of a killed run have left on the sound server.
#pragma once

namespace velto {

class PulseServer;

/// Moves the streams on sinks of taps whose process is no client any more to the default sink, and unloads
/// the sinks; true when there were any. `ownInUse`: this process has such a sink. Waits for the server;
/// without its lock.
bool sweepTapSinks(PulseServer& server, bool ownInUse);

} // namespace velto
