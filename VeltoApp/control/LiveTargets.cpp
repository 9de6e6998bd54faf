#include "VeltoApp/control/LiveTargets.h"

#include "VeltoApp/control/ControlServer.h"
#include "VeltoApp/session/NativeCallSession.h"
#include "VeltoApp/state/AgentState.h"
#include "VeltoApp/state/ReadinessState.h"

namespace velto {
namespace {

class SessionTarget : public ControlledSession {
  public:
    bool running() const override { return session_->running(); }
    std::string_view state() const override { return rawValue(session_->state()); }
    std::string number() const override { return session_->number(); }
    void setNumber(std::string number) override { session_->number.set(std::move(number)); }
    std::int64_t sessionNumber() const override { return session_->sessionNumber(); }
    void start(std::string goal, bool dial) override { session_->start(std::move(goal), dial); }
    void stop() override { session_->stop(); }
    std::vector<std::string> liveTranscript() const override { return session_->liveTranscript(); }

  private:
    std::shared_ptr<NativeCallSession> session_ = NativeCallSession::shared();
};

class AgentTarget : public ControlledAgent {
  public:
    std::optional<VoiceProvider> activeProvider() const override { return agent_->activeProvider(); }
    std::string goal() const override { return agent_->goal(); }
    bool anyKeyValid() const override { return agent_->anyKeyValid(); }
    bool geminiValid() const override { return agent_->geminiValid(); }
    bool openaiValid() const override { return agent_->openaiValid(); }
    bool hasGeminiKey() const override { return agent_->hasGeminiKey(); }
    bool hasOpenAIKey() const override { return agent_->hasOpenAIKey(); }

  private:
    std::shared_ptr<AgentState> agent_ = AgentState::shared();
};

class ReadinessTarget : public ControlledReadiness {
  public:
    void refresh() override { setup_->refresh(); }
    bool axReady() const override { return setup_->axReady(); }
    bool micReady() const override { return setup_->micReady(); }
    bool driverReady() const override { return setup_->driverReady(); }
    bool ready() const override { return setup_->ready(); }

  private:
    std::shared_ptr<ReadinessState> setup_ = ReadinessState::shared();
};

} // namespace

void startControlServer() {
    // The server holds them weakly, and they live as long as the process.
    static const auto session = std::make_shared<SessionTarget>();
    static const auto agent = std::make_shared<AgentTarget>();
    static const auto setup = std::make_shared<ReadinessTarget>();
    ControlServer::shared()->start(session, agent, setup);
}

} // namespace velto
