// A user who is asked about the microphone, and answers when a test says so.
#pragma once

#include "VeltoPlatform/MicrophoneAccess.h"

#include <mutex>
#include <vector>

namespace velto {

/// Authorized until told otherwise. Any thread.
class SimulatedMicrophone final : public MicrophoneAccess {
  public:
    void set(MicrophoneAuthorization authorization, std::string reason = {});
    /// Answers all requests that wait, on the calling thread.
    void answer(MicrophoneAuthorization authorization, std::string reason = {});

    MicrophoneStatus status() override;
    void request(std::function<void()> answered) override;

  private:
    std::mutex mutex_;
    MicrophoneStatus status_{MicrophoneAuthorization::authorized, {}};
    std::vector<std::function<void()>> requests_;
};

} // namespace velto
