// What the call session asks of the rest of the system, one small interface a subject, so that its rules can
// be tried against any line, agent and sound.
#pragma once

#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/core/Result.h"
#include "VeltoShared/voice/VoiceProvider.h"

#include <boost/asio/awaitable.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

namespace asio = boost::asio;

struct CallRecord;

/// The phone, as seen from outside. Main thread.
class CallLine {
  public:
    virtual ~CallLine() = default;
    virtual bool trusted() = 0;
    virtual std::vector<std::string> texts(const std::optional<std::string>& bundleID) = 0;
    virtual bool callActive() = 0;
    virtual bool callAnswered() = 0;
    /// True when a call is in progress; each line is handed to `log` on the main thread.
    virtual asio::awaitable<bool> dial(std::string number, std::function<void(std::string)> log) = 0;
    /// True when no call is in progress afterwards. Takes up to about 6 s.
    virtual asio::awaitable<bool> hangup() = 0;
};

/// A process tap that exists; `destroy` takes it away, as does destruction.
class CallTap {
  public:
    virtual ~CallTap() = default;
    virtual std::string deviceName() const = 0;
    virtual void destroy() = 0;
};

/// A recording under way.
class CallRecorder {
  public:
    virtual ~CallRecorder() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
    /// After `stop`: what is missing in the file, and why; empty when nothing is.
    virtual std::string trouble() const = 0;
};

/// The sound of a call: routing, tap, recorder. Main thread.
class CallAudio {
  public:
    virtual ~CallAudio() = default;
    /// Whether this platform has process taps at all.
    virtual bool tapsSupported() = 0;
    virtual std::unique_ptr<CallTap> makeTap(const std::string& bundleID, const std::string& name,
                                             bool muteOriginal) = 0;
    /// None when the device is missing. `rate` in Hz.
    virtual std::unique_ptr<CallRecorder> makeRecorder(const std::string& deviceName, double rate,
                                                       const std::filesystem::path& file) = 0;
    virtual AudioBridge::Status enforceSavingPrevious(bool inputOnly) = 0;
    virtual AudioBridge::Status enforce(bool inputOnly) = 0;
    virtual bool restoreIfNeeded() = 0;
    /// `returned` runs on the main thread when the sound server was lost and is back; an empty one ends it.
    virtual void observeReturn(std::function<void()> returned) = 0;
};

/// The agent of one call.
class CallAgent {
  public:
    virtual ~CallAgent() = default;
    /// The callbacks come on any thread.
    virtual void setLog(std::function<void(std::string)> log) = 0;
    virtual void
    setOnToolCall(std::function<std::string(const std::string&, const std::string&)> handler) = 0;
    virtual asio::awaitable<Result<>> start() = 0;
    virtual void greet() = 0;
    virtual void stop() = 0;
};

struct CallAgentOptions {
    VoiceProvider provider = VoiceProvider::gemini;
    std::string apiKey;
    std::string goal;
    std::string voice;
    std::string inputDevice;
    std::string outputDevice;
    std::optional<std::string> monitorDevice;
    double outputRate = 0; ///< Hz

    bool operator==(const CallAgentOptions&) const = default;
};

class CallAgents {
  public:
    virtual ~CallAgents() = default;
    virtual std::shared_ptr<CallAgent> make(const CallAgentOptions& options) = 0;
};

/// Where finished calls go. Main thread.
class CallArchive {
  public:
    virtual ~CallArchive() = default;
    /// Puts the record in front and saves the whole list.
    virtual void add(CallRecord record) = 0;
};

/// Each must outlive the session.
struct SessionCollaborators {
    CallLine* line = nullptr;
    CallAudio* audio = nullptr;
    CallAgents* agents = nullptr;
    CallArchive* archive = nullptr;
};

} // namespace velto
