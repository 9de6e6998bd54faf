#include "VeltoApp/session/LiveCollaborators.h"

#include "VeltoApp/history/CallHistoryStore.h"
#include "VeltoApp/session/NativeCallSession.h"
#include "VeltoPlatform/AudioHardware.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoShared/agent/NativeAgent.h"
#include "VeltoShared/audio/ProcessTap.h"
#include "VeltoShared/audio/WavRecorder.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/telephony/AX.h"
#include "VeltoShared/telephony/Telephony.h"

namespace velto {
namespace {

asio::awaitable<bool> hangUpBlocking() {
    co_return Telephony::hangup();
}

class LiveLine : public CallLine {
  public:
    bool trusted() override { return AX::trusted(); }
    std::vector<std::string> texts(const std::optional<std::string>& bundleID) override {
        return AX::texts(bundleID);
    }
    bool callActive() override { return Telephony::callActive(); }
    bool callAnswered() override { return Telephony::callAnswered(); }
    asio::awaitable<bool> dial(std::string number, std::function<void(std::string)> log) override {
        return Telephony::dial(std::move(number), std::move(log));
    }
    /// It waits for the phone app, for seconds where that hangs: not on the main thread.
    asio::awaitable<bool> hangup() override { co_return co_await Blocking::run(hangUpBlocking()); }
};

class LiveTap : public CallTap {
  public:
    explicit LiveTap(std::unique_ptr<ProcessTap> tap) : tap_(std::move(tap)) {}

    std::string deviceName() const override { return tap_->deviceName(); }
    void destroy() override { tap_->destroy(); }

  private:
    std::unique_ptr<ProcessTap> tap_;
};

class LiveRecorder : public CallRecorder {
  public:
    explicit LiveRecorder(std::unique_ptr<WavRecorder> recorder) : recorder_(std::move(recorder)) {}
    void start() override { recorder_->start(); }
    void stop() override { recorder_->stop(); }
    std::string trouble() const override { return recorder_->trouble(); }

  private:
    std::unique_ptr<WavRecorder> recorder_;
};

class LiveAudio : public CallAudio {
  public:
    bool tapsSupported() override { return true; }
    std::unique_ptr<CallTap> makeTap(const std::string& bundleID, const std::string& name,
                                     bool muteOriginal) override {
        auto tap = ProcessTap::create(bundleID, name, muteOriginal);
        if (!tap)
            return nullptr;
        return std::make_unique<LiveTap>(std::move(tap));
    }
    std::unique_ptr<CallRecorder> makeRecorder(const std::string& deviceName, double rate,
                                               const std::filesystem::path& file) override {
        auto recorder = WavRecorder::open(deviceName, rate, file);
        if (!recorder)
            return nullptr;
        return std::make_unique<LiveRecorder>(std::move(recorder));
    }
    AudioBridge::Status enforceSavingPrevious(bool inputOnly) override {
        return AudioBridge::enforceSavingPrevious(inputOnly);
    }
    AudioBridge::Status enforce(bool inputOnly) override { return AudioBridge::enforce(inputOnly); }
    bool restoreIfNeeded() override { return AudioBridge::restoreIfNeeded(); }
    void observeReturn(std::function<void()> returned) override {
        std::function<void()> onMainThread;
        if (returned)
            onMainThread = [returned = std::move(returned)] { MainThread::post(returned); };
        platform().audioHardware->observeReturn(std::move(onMainThread));
    }
};

/// Runs the agent on `Background`, where its loops live, and hands the outcome back to the caller's thread.
class LiveAgent : public CallAgent {
  public:
    explicit LiveAgent(NativeAgent::Options options)
        : agent_(std::make_shared<NativeAgent>(std::move(options))) {}

    void setLog(std::function<void(std::string)> log) override { agent_->setLog(std::move(log)); }
    void setOnToolCall(std::function<std::string(const std::string&, const std::string&)> handler) override {
        agent_->setOnToolCall(std::move(handler));
    }
    asio::awaitable<Result<>> start() override { return Background::run(agent_->start()); }
    void greet() override { agent_->greet(); }
    void stop() override { agent_->stop(); }

  private:
    std::shared_ptr<NativeAgent> agent_;
};

class LiveAgents : public CallAgents {
  public:
    std::shared_ptr<CallAgent> make(const CallAgentOptions& options) override {
        NativeAgent::Options agent;
        agent.provider = options.provider;
        agent.apiKey = options.apiKey;
        agent.goal = options.goal;
        agent.voice = options.voice;
        agent.inputDevice = options.inputDevice;
        agent.outputDevice = options.outputDevice;
        agent.monitorDevice = options.monitorDevice;
        agent.outputRate = options.outputRate;
        return std::make_shared<LiveAgent>(std::move(agent));
    }
};

class LiveArchive : public CallArchive {
  public:
    void add(CallRecord record) override { CallHistoryStore::shared().insertFirst(std::move(record)); }
};

} // namespace

SessionCollaborators liveCollaborators() {
    static LiveLine line;
    static LiveAudio audio;
    static LiveAgents agents;
    static LiveArchive archive;
    return {&line, &audio, &agents, &archive};
}

const std::shared_ptr<NativeCallSession>& NativeCallSession::shared() {
    static const auto session =
        std::make_shared<NativeCallSession>(liveCollaborators(), AppSettings::shared());
    return session;
}

} // namespace velto
