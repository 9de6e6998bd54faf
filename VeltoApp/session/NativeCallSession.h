// One AI call from warm-up to the history record: the spine of the application.
#pragma once

#include "VeltoApp/session/SessionCollaborators.h"
#include "VeltoApp/session/Transcript.h"
#include "VeltoShared/core/AppSettings.h"
#include "VeltoShared/core/BoundedSequence.h"
#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Published.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

/// Held by `std::shared_ptr`; main thread only. Work of a finished call that comes late carries its
/// generation and does nothing. A second `finish` of one generation is ignored, so that a call is stored
/// once.
class NativeCallSession : public ObservableObject, public std::enable_shared_from_this<NativeCallSession> {
  public:
    enum class State {
        idle,    ///< nothing has run since launch
        warming, ///< waiting for the agent, or for the call to connect and be answered
        dialing, ///< the number is being dialed while the agent connects
        live,    ///< the callee answered, or the wait for it gave up
        ended,   ///< finished; the record is stored
        error,   ///< the session or its agent could not start
    };

    /// What went wrong first, with the latest session or instead of it.
    struct Failure {
        enum class Reason {
            none,
            noKey,          ///< no provider's key is stored; nothing was started
            notTrusted,     ///< no accessibility access; nothing was started
            agent,          ///< the agent could not start
            invalidNumber,  ///< nothing that can be dialed
            notDialed,      ///< no call came of the number
            neverConnected, ///< nobody placed or connected a call in time
        };
        Reason reason = Reason::none;
        std::string description; ///< the agent's own words; empty for the others
        bool operator==(const Failure&) const = default;
    };

    NativeCallSession(SessionCollaborators collaborators, AppSettings& settings);
    ~NativeCallSession();

    /// The process's session, over `liveCollaborators()`.
    static const std::shared_ptr<NativeCallSession>& shared();

    /// Returns at once; does nothing while `running`. With `dial` it dials `number`, without it waits for a
    /// call that the user places or answers.
    void start(std::string goal, bool dial);
    /// Ends the session; the phone call goes on.
    void stop();
    void finish(std::int64_t generation);
    /// The model asks to hang up, which happens 2.5 s later, so that its goodbye is heard.
    void requestHangup(const std::string& reason);

    /// Finished turns and the turn under way.
    std::vector<std::string> liveTranscript() const;

    Published<State> state{*this, State::idle};
    Published<Failure> failure{*this};
    Published<std::int64_t> sessionNumber{*this, 0}; ///< generation of the latest start
    Published<bool> running{*this, false};
    Published<std::vector<std::string>> log{*this}; ///< newest last, at most 400 lines
    Published<std::vector<std::string>> transcriptLines{*this};
    Published<std::string> audioStats{*this}; ///< the agent's latest statistics
    Published<std::string> number{*this};     ///< to be dialed

  private:
    struct ProviderKey {
        VoiceProvider provider;
        std::string key;
    };
    struct FlowOptions {
        std::string goal;
        bool dial;
        ProviderKey provider;
        std::int64_t generation;
    };
    using Weak = std::weak_ptr<NativeCallSession>;
    using Completion = std::shared_ptr<BoundedSequence<bool>>;

    bool isCurrent(std::int64_t generation) const { return running() && generation == generation_; }
    static std::shared_ptr<NativeCallSession> current(const Weak& weak, std::int64_t generation);

    void append(const std::string& line);
    void refuse(Failure::Reason reason, const std::string& line);
    void noteFailure(Failure::Reason reason, std::string description = {});
    std::optional<ProviderKey> pickProvider() const;
    void route();
    bool routeThroughTap();
    void appendRouting(const AudioBridge::Status& status);
    void observeSoundServer();
    void tick(std::int64_t generation);
    void record(const std::string& line, std::int64_t generation);
    void flushTurn();
    void saveHistory();
    void startRecordingIfEnabled();
    std::shared_ptr<CallAgent> makeAgent(const FlowOptions& options);

    static asio::awaitable<void> flow(Weak weak, FlowOptions options);
    static asio::awaitable<bool> waitForCall(Weak weak, std::int64_t generation);
    static asio::awaitable<void> waitForAnswer(Weak weak, std::int64_t generation);
    static asio::awaitable<void> startAgent(Weak weak, FlowOptions options, Completion done);
    static asio::awaitable<void> hangUpLater(Weak weak, std::int64_t generation);
    static asio::awaitable<void> routeAgain(Weak weak, std::int64_t generation);
    std::string phoneTexts();

    SessionCollaborators collaborators_;
    AppSettings& settings_;
    std::shared_ptr<CallAgent> agent_;
    std::unique_ptr<Timer> poll_;
    std::unique_ptr<CallTap> tap_;
    std::unique_ptr<CallRecorder> recorder_;
    Transcript transcript_;
    bool inCall_ = false; ///< a call has been seen active during this session
    bool routed_ = false; ///< this session switched the default devices
    std::int64_t generation_ = 0;
    std::int64_t finished_ = 0; ///< the latest generation that has been finished
    std::optional<Clock::WallTime> startedAt_;
    std::optional<std::string> recordingPath_;
    std::string downlinkDevice_{AudioBridge::agentMic};
};

/// The word that the control socket reports.
std::string_view rawValue(NativeCallSession::State state);

} // namespace velto
