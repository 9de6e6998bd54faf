// Audio hardware objects on the sound server.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <memory>

namespace velto {

class PulseServer;

/// Every operation asks the server once and waits for it at most `PulseServer::answerLimit`. A process's
/// object is its process identifier.
class PulseHardware final : public AudioHardware {
  public:
    explicit PulseHardware(std::shared_ptr<PulseServer> server);
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
    std::shared_ptr<PulseServer> server_;
};

} // namespace velto
