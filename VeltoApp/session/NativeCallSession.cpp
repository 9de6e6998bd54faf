#include "VeltoApp/session/NativeCallSession.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoApp/history/CallRecord.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/LocalTimestamp.h"
#include "VeltoShared/core/TextTrim.h"
#include "VeltoShared/telephony/AX.h"
#include "VeltoShared/telephony/Telephony.h"

#include <boost/algorithm/string/join.hpp>

#include <array>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kLogLines = 400;
constexpr auto kTickInterval = 500ms;
constexpr double kRecordingRate = 16000;

} // namespace

std::string_view rawValue(NativeCallSession::State state) {
    static constexpr std::array<std::string_view, 6> kWords{"idle", "warming", "dialing",
                                                            "live", "ended",   "error"};
    return kWords.at(static_cast<std::size_t>(state));
}

NativeCallSession::NativeCallSession(SessionCollaborators collaborators, AppSettings& settings)
    : collaborators_(collaborators), settings_(settings) {}

NativeCallSession::~NativeCallSession() {
    if (routed_)
        collaborators_.audio->observeReturn({});
}

std::shared_ptr<NativeCallSession> NativeCallSession::current(const Weak& weak, std::int64_t generation) {
    auto session = weak.lock();
    return session && session->isCurrent(generation) ? session : nullptr;
}

void NativeCallSession::append(const std::string& line) {
    log.mutate([&](auto& lines) {
        lines.push_back(line);
        if (lines.size() > kLogLines)
            lines.erase(lines.begin(), lines.end() - kLogLines);
    });
    Helper::log("session: " + line);
}

void NativeCallSession::refuse(Failure::Reason reason, const std::string& line) {
    append(line);
    failure.set({reason, {}});
    state.set(State::error);
}

/// The first one brought about the others.
void NativeCallSession::noteFailure(Failure::Reason reason, std::string description) {
    if (failure().reason == Failure::Reason::none)
        failure.set({reason, std::move(description)});
}

std::optional<NativeCallSession::ProviderKey> NativeCallSession::pickProvider() const {
    std::array order{VoiceProvider::gemini, VoiceProvider::openai};
    if (settings_.provider() == rawValue(VoiceProvider::openai))
        std::swap(order[0], order[1]);
    for (const auto provider : order) {
        const auto stored = KeychainStore::get(keyAccount(provider)).value_or("");
        if (const auto key = trimBlanks(stored); !key.empty())
            return ProviderKey{provider, std::string(key)};
    }
    return std::nullopt;
}

void NativeCallSession::start(std::string goal, bool dial) {
    if (running())
        return;
    auto provider = pickProvider();
    if (!provider)
        return refuse(Failure::Reason::noKey, "no API key");
    if (!collaborators_.line->trusted())
        return refuse(Failure::Reason::notTrusted, "Accessibility not granted");

    running.set(true);
    failure.set({});
    ++generation_;
    sessionNumber.set(generation_);
    inCall_ = collaborators_.line->callActive();
    transcript_.clear();
    transcriptLines.set({});
    audioStats.set({});
    startedAt_ = Clock::shared().now();
    recordingPath_.reset();
    append("session " + std::to_string(generation_) + " starting");
    route();
    MainThread::spawn(flow(weak_from_this(), {std::move(goal), dial, std::move(*provider), generation_}));
    poll_ = Clock::shared().repeat(kTickInterval, [weak = weak_from_this(), generation = generation_] {
        if (const auto session = weak.lock())
            session->tick(generation);
    });
}

void NativeCallSession::route() {
    downlinkDevice_ = AudioBridge::agentMic;
    if (tap_)
        std::exchange(tap_, nullptr)->destroy();
    routed_ = settings_.routeSystemAudio();
    if (!routeThroughTap()) {
        if (routed_)
            appendRouting(collaborators_.audio->enforceSavingPrevious(false));
        else
            append("downlink: '" + downlinkDevice_ + "' (system routing not switched)");
    }
    if (routed_)
        observeSoundServer();
}

bool NativeCallSession::routeThroughTap() {
    if (!settings_.useProcessTap() || !collaborators_.audio->tapsSupported())
        return false;
    tap_ = collaborators_.audio->makeTap(std::string(AX::kPhoneApp), "VeltoTap", settings_.muteCallLocally());
    if (!tap_) {
        append("downlink: tap unavailable — grant “Screen & System Audio Recording”, quit & reopen Velto");
        return false;
    }
    downlinkDevice_ = tap_->deviceName();
    append("downlink: process tap on Phone.app ('" + downlinkDevice_ + "')");
    if (routed_)
        appendRouting(collaborators_.audio->enforceSavingPrevious(true));
    return true;
}

void NativeCallSession::appendRouting(const AudioBridge::Status& status) {
    const auto output = tap_ ? " (output untouched)" : " out='" + status.output + "'";
    append("audio: " + status.message + " · in='" + status.input + "'" + output);
}

/// A sound server that comes back has its own idea of the default devices; the call needs the virtual ones.
void NativeCallSession::observeSoundServer() {
    collaborators_.audio->observeReturn([weak = weak_from_this(), generation = generation_] {
        MainThread::spawn(routeAgain(weak, generation));
    });
}

asio::awaitable<void> NativeCallSession::routeAgain(Weak weak, std::int64_t generation) {
    constexpr int kAttempts = 20; // the devices may appear a while after the server
    for (int attempt = 1;; ++attempt) {
        {
            const auto session = current(weak, generation);
            if (!session)
                co_return;
            const auto status = session->collaborators_.audio->enforce(session->tap_ != nullptr);
            if ((status.ok && status.input == AudioBridge::inputDevice) || attempt == kAttempts) {
                session->appendRouting(status);
                co_return;
            }
        }
        co_await Clock::shared().sleep(100ms);
    }
}

asio::awaitable<void> NativeCallSession::flow(Weak weak, FlowOptions options) {
    const auto generation = options.generation;
    const auto agentDone = std::make_shared<BoundedSequence<bool>>(1);
    std::string number;
    CallLine* line = nullptr;
    {
        const auto session = current(weak, generation);
        if (!session)
            co_return;
        session->state.set(options.dial ? State::dialing : State::warming);
        number = session->number();
        line = session->collaborators_.line;
    }
    MainThread::spawn(startAgent(weak, options, agentDone));

    if (options.dial) {
        const std::function<void(std::string)> dialLog = [weak](const std::string& text) {
            if (const auto session = weak.lock())
                session->append(text);
        };
        const bool dialled = co_await line->dial(number, dialLog);
        if (const auto session = current(weak, generation)) {
            session->append(dialled ? "dialled " + number : "dial failed (no line)");
            if (!dialled)
                session->noteFailure(Telephony::isDialable(number) ? Failure::Reason::notDialed
                                                                   : Failure::Reason::invalidNumber);
        }
        co_await agentDone->next();
        if (!dialled) {
            if (const auto session = weak.lock())
                session->finish(generation);
            co_return;
        }
    } else {
        co_await agentDone->next();
    }

    if (const auto session = current(weak, generation))
        session->state.set(State::warming);
    const bool connected = co_await waitForCall(weak, generation);
    if (!connected)
        co_return;
    co_await waitForAnswer(weak, generation);

    if (const auto session = current(weak, generation)) {
        session->state.set(State::live);
        session->append("call answered — greeting");
    } else {
        co_return;
    }
    co_await Clock::shared().sleep(400ms);
    if (const auto session = current(weak, generation)) {
        if (session->agent_)
            session->agent_->greet();
        session->startRecordingIfEnabled();
    }
}

asio::awaitable<bool> NativeCallSession::waitForCall(Weak weak, std::int64_t generation) {
    constexpr int kPolls = 301; // about 90 s
    for (int count = 0;;) {
        {
            const auto session = current(weak, generation);
            if (!session)
                co_return false;
            if (session->collaborators_.line->callActive())
                co_return true;
        }
        co_await Clock::shared().sleep(300ms);
        if (++count == kPolls) {
            if (const auto session = current(weak, generation)) {
                session->append("no call connected; stopping");
                session->noteFailure(Failure::Reason::neverConnected);
                session->finish(generation);
            }
            co_return false;
        }
    }
}

asio::awaitable<void> NativeCallSession::waitForAnswer(Weak weak, std::int64_t generation) {
    constexpr int kPolls = 51;          // about 15 s
    constexpr int kPollsPerReport = 10; // 3 s
    for (int count = 0;;) {
        {
            const auto session = current(weak, generation);
            if (!session || session->collaborators_.line->callAnswered())
                co_return;
        }
        co_await Clock::shared().sleep(300ms);
        const auto session = current(weak, generation);
        if (!session)
            co_return;
        ++count;
        if (count % kPollsPerReport == 0)
            session->append("waiting for answer… phone shows: " + session->phoneTexts());
        if (count == kPolls) {
            session->append("answer not detected; greeting anyway");
            co_return;
        }
    }
}

std::string NativeCallSession::phoneTexts() {
    auto texts = collaborators_.line->texts(std::nullopt);
    const auto phone = collaborators_.line->texts(std::string(AX::kPhoneApp));
    texts.insert(texts.end(), phone.begin(), phone.end());
    std::erase(texts, "Phone");
    return boost::algorithm::join(texts, " | ");
}

std::shared_ptr<CallAgent> NativeCallSession::makeAgent(const FlowOptions& options) {
    const auto provider = options.provider.provider;
    CallAgentOptions agent;
    agent.provider = provider;
    agent.apiKey = options.provider.key;
    agent.goal = options.goal;
    agent.voice = provider == VoiceProvider::openai ? settings_.openaiVoice() : settings_.geminiVoice();
    agent.inputDevice = downlinkDevice_;
    agent.outputDevice = AudioBridge::agentFeed;
    agent.outputRate = 24000;
    if (settings_.monitorAgent() && !settings_.monitorDevice().empty())
        agent.monitorDevice = settings_.monitorDevice();

    append("provider: " + std::string(displayName(provider)) + " · voice " + agent.voice);
    auto made = collaborators_.agents->make(agent);
    const auto generation = options.generation;
    made->setLog([weak = weak_from_this(), generation](std::string line) {
        MainThread::post([weak, generation, line = std::move(line)] {
            if (const auto session = weak.lock())
                session->record(line, generation);
        });
    });
    made->setOnToolCall([weak = weak_from_this(), generation](const std::string& name,
                                                              const std::string& arguments) -> std::string {
        if (weak.expired())
            return R"({"status":"error"})";
        if (name != "end_call")
            return R"({"status":"unsupported"})";
        MainThread::post([weak, generation, arguments] {
            if (const auto session = current(weak, generation))
                session->requestHangup(arguments);
        });
        return R"({"status":"hanging_up"})";
    });
    return made;
}

asio::awaitable<void> NativeCallSession::startAgent(Weak weak, FlowOptions options, Completion done) {
    std::shared_ptr<CallAgent> agent;
    if (const auto session = current(weak, options.generation)) {
        agent = session->makeAgent(options);
        session->agent_ = agent;
    }
    if (agent) {
        const auto started = co_await agent->start();
        if (const auto session = current(weak, options.generation)) {
            if (started.has_value()) {
                session->append("agent pre-warmed (Gemini connected)");
            } else {
                session->append("agent error: " + started.error().description);
                session->noteFailure(Failure::Reason::agent, started.error().description);
                session->state.set(State::error);
            }
        }
    }
    done->finish();
}

void NativeCallSession::requestHangup(const std::string& reason) {
    if (!running())
        return;
    append("agent requested hangup " + reason);
    MainThread::spawn(hangUpLater(weak_from_this(), generation_));
}

asio::awaitable<void> NativeCallSession::hangUpLater(Weak weak, std::int64_t generation) {
    co_await Clock::shared().sleep(2500ms);
    CallLine* line = nullptr;
    if (const auto session = current(weak, generation))
        line = session->collaborators_.line;
    if (line == nullptr)
        co_return;
    const bool hungUp = co_await line->hangup();
    // The watch may have seen the end first and finished the session.
    if (const auto session = weak.lock(); session && session->generation_ == generation)
        session->append(hungUp ? "hung up" : "hangup did not complete");
}

void NativeCallSession::tick(std::int64_t generation) {
    if (!isCurrent(generation))
        return;
    if (collaborators_.line->callActive()) {
        inCall_ = true;
    } else if (inCall_) {
        append("call ended");
        finish(generation);
    }
}

void NativeCallSession::stop() {
    append("stopping");
    finish(generation_);
}

void NativeCallSession::finish(std::int64_t generation) {
    if (generation != generation_ || generation == finished_)
        return;
    finished_ = generation;
    running.set(false);
    if (agent_)
        std::exchange(agent_, nullptr)->stop();
    poll_ = nullptr;
    inCall_ = false;
    state.set(State::ended);
    if (const auto recorder = std::exchange(recorder_, nullptr)) {
        recorder->stop();
        if (const auto trouble = recorder->trouble(); !trouble.empty())
            append("recording: " + trouble);
    }
    saveHistory();
    if (tap_)
        std::exchange(tap_, nullptr)->destroy();
    if (std::exchange(routed_, false))
        collaborators_.audio->observeReturn({});
    if (settings_.restoreDevices() && collaborators_.audio->restoreIfNeeded())
        append("audio: restored your default devices");
}

void NativeCallSession::record(const std::string& line, std::int64_t generation) {
    append(line);
    if (generation != generation_) // a word of an earlier call's agent is no part of this call
        return;
    const std::string_view text = line;
    constexpr std::string_view kStats = "stats: ";
    constexpr std::string_view kCaller = "caller: ";
    constexpr std::string_view kAgent = "agent: ";
    if (const auto at = text.find(kStats); at != text.npos)
        audioStats.set(std::string(text.substr(at + kStats.size())));
    if (text.starts_with(kCaller))
        transcript_.addCaller(text.substr(kCaller.size()));
    else if (text.starts_with(kAgent))
        transcript_.addAgent(text.substr(kAgent.size()));
    else if (text == "turn complete" || text == "interrupted")
        flushTurn();
}

void NativeCallSession::flushTurn() {
    const auto finished = transcript_.flushTurn();
    if (!finished.empty())
        transcriptLines.mutate(
            [&](auto& lines) { lines.insert(lines.end(), finished.begin(), finished.end()); });
}

std::vector<std::string> NativeCallSession::liveTranscript() const {
    auto lines = transcriptLines();
    const auto pending = transcript_.pending();
    lines.insert(lines.end(), pending.begin(), pending.end());
    return lines;
}

void NativeCallSession::saveHistory() {
    flushTurn();
    const auto now = Clock::shared().now();
    const auto started = startedAt_.value_or(now);
    CallRecord finished;
    finished.number = number();
    finished.started = CallRecord::Time::of(started);
    finished.duration = std::chrono::duration<double>(now - started).count();
    finished.transcript = boost::algorithm::join(transcriptLines(), "\n");
    finished.recordingPath = recordingPath_;
    collaborators_.archive->add(std::move(finished));
}

void NativeCallSession::startRecordingIfEnabled() {
    if (!settings_.recordCalls() || recorder_)
        return;
    const auto file = AppPaths::recordings() / ("call-" + localTimestamp(Clock::shared().now()) + ".wav");
    recorder_ = collaborators_.audio->makeRecorder(downlinkDevice_, kRecordingRate, file);
    if (!recorder_)
        return append("recording unavailable (capture device missing)");
    recorder_->start();
    recordingPath_ = file.string();
    append("recording → " + file.filename().string());
}

} // namespace velto
