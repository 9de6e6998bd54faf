// What the control server's commands ask of the application, one small interface an object.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

/// The call session. Main thread.
class ControlledSession {
  public:
    virtual ~ControlledSession() = default;

    virtual bool running() const = 0;
    /// The state's raw value: "idle", "warming", "dialing", "live", "ended" or "error".
    virtual std::string_view state() const = 0;
    virtual std::string number() const = 0;
    virtual void setNumber(std::string number) = 0;
    virtual std::int64_t sessionNumber() const = 0;
    virtual void start(std::string goal, bool dial) = 0;
    virtual void stop() = 0;
    virtual std::vector<std::string> liveTranscript() const = 0;
};

/// The agent's goal and keys. Main thread.
class ControlledAgent {
  public:
    virtual ~ControlledAgent() = default;

    virtual std::optional<VoiceProvider> activeProvider() const = 0;
    virtual std::string goal() const = 0;
    virtual bool anyKeyValid() const = 0;
    virtual bool geminiValid() const = 0;
    virtual bool openaiValid() const = 0;
    virtual bool hasGeminiKey() const = 0;
    virtual bool hasOpenAIKey() const = 0;
};

/// Whether the application can place calls, as of the last look. Main thread.
class ControlledReadiness {
  public:
    virtual ~ControlledReadiness() = default;

    /// Looks again.
    virtual void refresh() = 0;
    virtual bool axReady() const = 0;
    virtual bool micReady() const = 0;
    virtual bool driverReady() const = 0;
    virtual bool ready() const = 0;
};

/// Any of them may be missing.
struct ControlTargets {
    std::shared_ptr<ControlledSession> session;
    std::shared_ptr<ControlledAgent> agent;
    std::shared_ptr<ControlledReadiness> setup;
};

} // namespace velto
