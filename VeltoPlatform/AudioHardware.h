// The operating system's audio hardware objects: devices, default devices, processes that use sound.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velto {

/// Identifies a device or an audio process to the platform; 0 is never an object. A device keeps its
/// identifier when the sound server restarts.
using AudioObjectID = std::uint32_t;

enum class AudioDirection { input, output };

/// All operations: any thread, synchronous, none when the read fails. Nothing is cached.
class AudioHardware {
  public:
    virtual ~AudioHardware() = default;

    virtual std::optional<std::vector<AudioObjectID>> devices() = 0;
    virtual std::optional<std::string> deviceName(AudioObjectID device) = 0;
    /// Channels of each stream of the device in one direction.
    virtual std::optional<std::vector<std::uint32_t>> streamConfiguration(AudioObjectID device,
                                                                          AudioDirection direction) = 0;

    /// 0 is a legal answer: there is no default device.
    virtual std::optional<AudioObjectID> defaultDevice(AudioDirection direction) = 0;
    /// Returns once the device is the default one; false when the system refuses.
    virtual bool setDefaultDevice(AudioDirection direction, AudioObjectID device) = 0;

    /// The audio object of a process; 0 is a legal answer: the process has none.
    virtual std::optional<AudioObjectID> processObject(pid_t pid) = 0;
    virtual std::optional<bool> processIsRunningInput(AudioObjectID process) = 0;

    /// `returned` is called, on any thread, each time the sound server has been lost and is reachable again:
    /// the system's default devices may then be other than before. One observer; an empty one ends it, and
    /// no call is under way once this has returned.
    virtual void observeReturn(std::function<void()> returned) = 0;
};

} // namespace velto
