// Puts a scenario on: starts every program, has the application place the call, and says how it went.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"
#include "rehearsal/PrivateSoundServer.h"
#include "rehearsal/director/Guardian.h"
#include "rehearsal/scenario/Scenario.h"

#include <filesystem>
#include <set>
#include <string>

namespace velto::rehearsal {

/// A wire to cut, to see the rehearsal notice it.
enum class Cut {
    nothing,
    uplink, ///< the feed device is muted: the callee hears nothing
    loop,   ///< the loop device does not exist: the agent hears nothing
};

struct DirectorOptions {
    Scenario scenario;
    std::filesystem::path scenarioFile;
    VoiceProvider provider = VoiceProvider::gemini; ///< that the application is to use
    std::set<VoiceProvider> keys;                   ///< whose key is in the keyring; not empty
    std::filesystem::path wire; ///< gets what the application sent; empty: nobody asks for it
    bool record = false;        ///< the application is to record the call
    bool tap = false;           ///< the application is to capture from the phone app itself
    bool mute = false;          ///< and to mute it on this computer
    /// The application is killed in mid-call and started again; what it left behind is judged.
    bool kill = false;
    SoundServerKind sound = SoundServerKind::pulseAudio;
    Cut cut = Cut::nothing;
    bool wait = false;    ///< somebody else places the call, within the scenario's deadline
    bool windows = false; ///< on the caller's display, where the application and the phone app are to be seen
    bool json = false;    ///< one JSON object at the end instead of text
    bool keepFolder = false;
};

/// Blocks until the rehearsal is over; answers the exit code: 0 when everything was as it should be, 1 when
/// not, 128 and the signal's number after a signal. Results go to standard output, troubles to standard
/// error.
int direct(const DirectorOptions& options, const GuardianLink& guardian);

} // namespace velto::rehearsal
