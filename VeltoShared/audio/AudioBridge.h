// Makes the virtual devices the system's defaults for a call, and puts the user's own back.
#pragma once

#include <string>
#include <string_view>

/// Main thread, synchronous. Keeps nothing in memory: what was switched is in the preferences store, so that
/// the next start repairs what a killed run has left behind. Refusals of the system are not reported;
/// `Status::input` and `output` tell what is in force.
namespace velto::AudioBridge {

/// Made the default input; what is played to `agentFeed` comes out of it.
inline constexpr std::string_view inputDevice = "VeltoVoice 2ch Mic";
/// Made the default output in full routing.
inline constexpr std::string_view outputDevice = "VeltoLoop 2ch";
/// What the agent captures when there is no tap.
inline constexpr std::string_view agentMic = "VeltoLoop 2ch";
/// Where the agent plays its voice.
inline constexpr std::string_view agentFeed = "VeltoVoice 2ch Feed";

struct Status {
    bool ok = false; ///< the devices are installed
    std::string message;
    std::string input;  ///< name of the default input after the operation, "" if none
    std::string output; ///< name of the default output after the operation, "" if none
};

/// Whether both `inputDevice` and `outputDevice` exist.
bool installed();
/// Switches the defaults without saving anything; nothing is touched unless `installed()`.
Status enforce(bool inputOnly);
/// Saves the defaults once, until they are restored, then `enforce`.
Status enforceSavingPrevious(bool inputOnly);
/// Puts the saved defaults back; false when no switch is recorded.
bool restoreIfNeeded();

} // namespace velto::AudioBridge
