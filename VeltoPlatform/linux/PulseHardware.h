// Audio hardware objects on the sound server.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <chrono>
#include <memory>
#include <mutex>

namespace velto {

class PulseServer;
class PulseTaps;
struct PulseDevice;

/// An operation asks the server once or twice and waits at most `PulseServer::answerLimit` each time. What
/// it lists serves the reads of single devices that follow within `listAge`, so that a walk over all devices
/// is one question and not three for each device. A process's object is its process identifier: any may come
/// to the server at any moment. What its descendants do counts as its own.
class PulseHardware final : public AudioHardware {
  public:
    static constexpr std::chrono::milliseconds listAge{20};

    /// With `taps`, their devices are among the others.
    explicit PulseHardware(std::shared_ptr<PulseServer> server, std::shared_ptr<PulseTaps> taps = {});
    ~PulseHardware() override;

    std::optional<std::vector<AudioObjectID>> devices() override;
    std::optional<std::string> deviceName(AudioObjectID device) override;
    std::optional<std::vector<std::uint32_t>> streamConfiguration(AudioObjectID device,
                                                                  AudioDirection direction) override;
    std::optional<AudioObjectID> defaultDevice(AudioDirection direction) override;
    bool setDefaultDevice(AudioDirection direction, AudioObjectID device) override;
    std::optional<AudioObjectID> processObject(pid_t pid) override;
    std::optional<bool> processIsRunningInput(AudioObjectID process) override;
    /// `returned` is called on the sound thread: it must not ask the hardware there, only pass the news on.
    void observeReturn(std::function<void()> returned) override;

  private:
    using Devices = std::shared_ptr<const std::vector<PulseDevice>>;

    /// None when the server does not answer.
    Devices read();
    std::optional<PulseDevice> find(AudioObjectID device);

    std::shared_ptr<PulseServer> server_;
    std::shared_ptr<PulseTaps> taps_;
    std::mutex mutex_;
    Devices list_;
    std::chrono::steady_clock::time_point listedAt_;
};

} // namespace velto
