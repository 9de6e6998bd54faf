// The in-process agent of one call: callee's audio to the model, the model's voice into the call.
#pragma once

#include "VeltoShared/agent/Agc.h"
#include "VeltoShared/agent/AgentStats.h"
#include "VeltoShared/agent/ChunkQueue.h"
#include "VeltoShared/audio/AudioCapture.h"
#include "VeltoShared/audio/AudioPlayback.h"
#include "VeltoShared/core/Result.h"
#include "VeltoShared/core/Task.h"
#include "VeltoShared/voice/VoiceProvider.h"
#include "VeltoShared/voice/VoiceSession.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace velto {

/// One instance a call, held by `std::shared_ptr`; never restarted. `start` is awaited on `Background`, where
/// the loops run; everything else: any thread, usually the main one.
class NativeAgent : public std::enable_shared_from_this<NativeAgent> {
  public:
    struct Options {
        VoiceProvider provider = VoiceProvider::gemini;
        std::string apiKey;
        std::string goal;
        std::optional<std::string> model; ///< none: the provider's default
        std::optional<std::string> voice; ///< none: the provider's default
        std::string inputDevice;          ///< name of the device that carries the callee's voice
        std::string outputDevice;         ///< name of the device that the model's voice is played into
        std::optional<std::string> monitorDevice; ///< none or empty: no monitor
        std::optional<double> inputRate;          ///< Hz; none: what the provider expects
        std::optional<double> outputRate;         ///< Hz; none: 24 000
    };
    using Log = std::function<void(std::string)>;
    /// Tool name and arguments JSON to result JSON. Called on `Background`.
    using ToolHandler = std::function<std::string(const std::string&, const std::string&)>;

    /// No network activity yet; cannot fail.
    explicit NativeAgent(Options options);
    /// With a voice session of the caller's.
    NativeAgent(Options options, std::shared_ptr<VoiceSession> client);
    ~NativeAgent();

    void setLog(Log log);
    void setOnToolCall(ToolHandler handler);

    /// Ends when the model is connected and units and loops run. Fails with the session's error, or with
    /// kErrorBadURL when there is no capture device. A `stop` meanwhile makes it fail, and nothing is left
    /// running.
    asio::awaitable<Result<>> start();
    /// Sends the greeting, once, as soon as the model is ready.
    void greet();
    /// Stops the loops and units and closes the session in the background. Any state, also twice.
    void stop();

    /// What the model is told to be and to do.
    static std::string systemInstruction(const std::string& goal);

  private:
    void log(std::string line);
    bool isStopped() const;
    Result<> startUnitsAndLoops();
    std::shared_ptr<AudioPlayback> startPlayer(const std::string& device);
    static asio::awaitable<void> feedLoop(std::weak_ptr<NativeAgent> weak,
                                          std::shared_ptr<ChunkQueue> chunks);
    static asio::awaitable<void> statsLoop(std::weak_ptr<NativeAgent> weak);
    static asio::awaitable<void> eventLoop(std::weak_ptr<NativeAgent> weak);
    /// False when the loop has to end.
    asio::awaitable<bool> handle(VoiceEvent event);
    asio::awaitable<void> answer(ToolCall call);
    void play(const AudioChunk& chunk);
    void sendGreetingIfPending();
    std::string statsLine() const;

    const std::shared_ptr<VoiceSession> client_;
    const Options options_;
    AgentStats stats_;
    Agc agc_;

    /// Guards everything below: `start` runs on `Background`, the owner's calls on the main thread.
    mutable std::mutex mutex_;
    Log log_;
    ToolHandler onToolCall_;
    std::shared_ptr<ChunkQueue> chunks_;
    std::unique_ptr<AudioCapture> capture_;
    std::shared_ptr<AudioPlayback> playback_;
    std::shared_ptr<AudioPlayback> monitor_;
    Task feedTask_;
    Task eventTask_;
    Task statsTask_;
    bool stopped_ = false;
    bool ready_ = false;
    bool pendingGreet_ = false;
    bool greeted_ = false;
};

} // namespace velto
