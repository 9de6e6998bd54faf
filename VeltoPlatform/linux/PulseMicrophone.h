// Whether the sound server lets this program record.
#pragma once

#include "VeltoPlatform/MicrophoneAccess.h"

#include <chrono>
#include <memory>
#include <mutex>

namespace velto {

class PulseServer;

/// Outside of a sandbox nobody is asked about microphones: who the server lets in may record whatever it has.
/// So the server is asked, and it is authorized when there is something to record from: any source but the
/// monitor of an output. The virtual devices count, being what a call is recorded from; a machine without a
/// sound card can hold one.
///
/// Not determined: no server, none that answers, or no source. Denied: the server refuses this program.
class PulseMicrophone final : public MicrophoneAccess {
  public:
    /// Long enough for a server that is well; one that is not is waited for once.
    static constexpr std::chrono::milliseconds patience{100};

    explicit PulseMicrophone(std::shared_ptr<PulseServer> server);
    ~PulseMicrophone() override;

    /// Not on the sound thread.
    MicrophoneStatus status() override;
    void request(std::function<void()> answered) override;

  private:
    struct Look;

    std::shared_ptr<PulseServer> server_;
    std::mutex mutex_;
    std::unique_ptr<Look> look_; ///< the last one, open while the server is silent
};

} // namespace velto
