#include "VeltoShared/agent/NativeAgent.h"

#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/voice/VoiceSessionFactory.h"

#include <boost/asio/this_coro.hpp>

#include <array>
#include <cstdio>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr double kOutputRate = 24000;
constexpr std::uint32_t kChannels = 2;
constexpr auto kStatsInterval = 3s;
constexpr const char* kUnsupported = R"({"status":"unsupported"})";

std::shared_ptr<VoiceSession> makeClient(const NativeAgent::Options& options) {
    return makeVoiceSession(options.provider, options.apiKey,
                            options.model.value_or(std::string(defaultModel(options.provider))),
                            options.voice.value_or(std::string(defaultVoice(options.provider))),
                            NativeAgent::systemInstruction(options.goal));
}

bool given(const std::optional<std::string>& name) {
    return name && !name->empty();
}

Failure stoppedMeanwhile() {
    return {kErrorNotConnected, "the agent was stopped while it started"};
}

asio::awaitable<bool> cancelled() {
    const auto state = co_await asio::this_coro::cancellation_state;
    co_return state.cancelled() != asio::cancellation_type::none;
}

} // namespace

std::string NativeAgent::systemInstruction(const std::string& goal) {
    return "You are a polite phone voice agent calling on behalf of the user. "
           "Goal for this call: " +
           goal +
           ". Be brief, speak naturally, identify as an AI test call if asked. "
           "When the goal is complete, or the caller wants to stop, say a short goodbye and then "
           "call the end_call tool to hang up.";
}

NativeAgent::NativeAgent(Options options) : client_(makeClient(options)), options_(std::move(options)) {}

NativeAgent::NativeAgent(Options options, std::shared_ptr<VoiceSession> client)
    : client_(std::move(client)), options_(std::move(options)) {}

NativeAgent::~NativeAgent() = default;

void NativeAgent::setLog(Log log) {
    std::lock_guard lock(mutex_);
    log_ = std::move(log);
}

void NativeAgent::setOnToolCall(ToolHandler handler) {
    std::lock_guard lock(mutex_);
    onToolCall_ = std::move(handler);
}

void NativeAgent::log(std::string line) {
    Log sink;
    {
        std::lock_guard lock(mutex_);
        sink = log_;
    }
    if (sink)
        sink(std::move(line));
}

asio::awaitable<Result<>> NativeAgent::start() {
    const auto self = shared_from_this();
    auto connected = co_await client_->connect();
    if (connected.has_error())
        co_return connected;
    if (isStopped())
        co_return stoppedMeanwhile();
    co_return startUnitsAndLoops();
}

bool NativeAgent::isStopped() const {
    std::lock_guard lock(mutex_);
    return stopped_;
}

std::shared_ptr<AudioPlayback> NativeAgent::startPlayer(const std::string& device) {
    std::shared_ptr<AudioPlayback> player =
        AudioPlayback::open(device, options_.outputRate.value_or(kOutputRate), kChannels);
    if (player)
        player->start();
    return player;
}

Result<> NativeAgent::startUnitsAndLoops() {
    auto playback = startPlayer(options_.outputDevice);
    if (!playback)
        log("uplink device not found: " + options_.outputDevice + " — agent voice goes nowhere");

    std::shared_ptr<AudioPlayback> monitor;
    if (given(options_.monitorDevice)) {
        monitor = startPlayer(*options_.monitorDevice);
        log(monitor ? "monitoring agent voice on '" + *options_.monitorDevice + "'"
                    : "monitor device not found: " + *options_.monitorDevice);
    }

    auto chunks = std::make_shared<ChunkQueue>(Background::executor());
    if (!chunks->isOpen())
        return Failure{kErrorTransport, "no file descriptor is left for the captured audio"};
    auto capture = AudioCapture::open(
        options_.inputDevice, options_.inputRate.value_or(velto::inputRate(options_.provider)), kChannels,
        [chunks](std::span<const std::int16_t> samples) { chunks->push(samples); });
    if (!capture)
        log("capture device not found: " + options_.inputDevice);

    std::lock_guard lock(mutex_);
    if (stopped_) // the units die with this scope
        return stoppedMeanwhile();
    playback_ = std::move(playback);
    monitor_ = std::move(monitor);
    if (!capture)
        return Failure{kErrorBadURL, "no capture device named '" + options_.inputDevice + "'"};
    capture_ = std::move(capture);
    chunks_ = std::move(chunks);
    capture_->start();
    const auto executor = Background::executor();
    feedTask_ = Task::start(executor, feedLoop(weak_from_this(), chunks_));
    statsTask_ = Task::start(executor, statsLoop(weak_from_this()));
    eventTask_ = Task::start(executor, eventLoop(weak_from_this()));
    return {};
}

asio::awaitable<void> NativeAgent::feedLoop(std::weak_ptr<NativeAgent> weak,
                                            std::shared_ptr<ChunkQueue> chunks) {
    co_await asio::this_coro::throw_if_cancelled(false);
    std::vector<std::int16_t> chunk;
    chunk.reserve(ChunkQueue::kMaxFrames);
    while (co_await chunks->next(chunk)) {
        const auto agent = weak.lock();
        if (!agent)
            co_return;
        agent->stats_.addDownlink(chunk);
        process(chunk, agent->agc_);
        co_await agent->client_->sendAudio(std::as_bytes(std::span(chunk)));
        if (co_await cancelled())
            co_return;
    }
}

asio::awaitable<void> NativeAgent::statsLoop(std::weak_ptr<NativeAgent> weak) {
    co_await asio::this_coro::throw_if_cancelled(false);
    for (;;) {
        co_await Clock::shared().sleep(kStatsInterval);
        if (co_await cancelled())
            co_return;
        const auto agent = weak.lock();
        if (!agent)
            co_return;
        agent->log(agent->statsLine());
    }
}

asio::awaitable<void> NativeAgent::eventLoop(std::weak_ptr<NativeAgent> weak) {
    co_await asio::this_coro::throw_if_cancelled(false);
    const auto agent = weak.lock();
    if (!agent)
        co_return;
    for (;;) {
        auto event = co_await agent->client_->events().next();
        if (!event || co_await cancelled())
            co_return;
        const bool goOn = co_await agent->handle(std::move(*event));
        if (!goOn)
            co_return;
    }
}

asio::awaitable<bool> NativeAgent::handle(VoiceEvent event) {
    if (const auto* audio = std::get_if<event::Audio>(&event)) {
        play(audio->chunk);
    } else if (auto* caller = std::get_if<event::CallerText>(&event)) {
        log("caller: " + caller->text);
    } else if (auto* agent = std::get_if<event::AgentText>(&event)) {
        log("agent: " + agent->text);
    } else if (auto* call = std::get_if<ToolCall>(&event)) {
        co_await answer(std::move(*call));
    } else if (auto* closed = std::get_if<event::Closed>(&event)) {
        log("closed: " + closed->reason);
        co_return false;
    } else if (std::holds_alternative<event::SetupComplete>(event)) {
        log("setup complete");
        {
            std::lock_guard lock(mutex_);
            ready_ = true;
        }
        sendGreetingIfPending();
    } else if (std::holds_alternative<event::TurnComplete>(event)) {
        log("turn complete");
    } else if (std::holds_alternative<event::Interrupted>(event)) {
        log("interrupted");
        std::shared_ptr<AudioPlayback> playback;
        {
            std::lock_guard lock(mutex_);
            playback = playback_;
        }
        if (playback)
            playback->flush();
    }
    co_return true;
}

void NativeAgent::play(const AudioChunk& chunk) {
    const auto samples = chunk.samples();
    stats_.addUplink(samples);
    std::shared_ptr<AudioPlayback> playback;
    std::shared_ptr<AudioPlayback> monitor;
    {
        std::lock_guard lock(mutex_);
        playback = playback_;
        monitor = monitor_;
    }
    if (playback)
        playback->write(samples);
    if (monitor)
        monitor->write(samples);
}

asio::awaitable<void> NativeAgent::answer(ToolCall call) {
    log("tool call: " + call.name + " " + call.argsJSON);
    ToolHandler handler;
    {
        std::lock_guard lock(mutex_);
        handler = onToolCall_;
    }
    std::string result = kUnsupported;
    if (handler)
        result = handler(call.name, call.argsJSON);
    co_await client_->sendToolResponse(std::move(call.id), std::move(call.name), std::move(result));
}

void NativeAgent::greet() {
    {
        std::lock_guard lock(mutex_);
        pendingGreet_ = true;
    }
    sendGreetingIfPending();
}

void NativeAgent::sendGreetingIfPending() {
    {
        std::lock_guard lock(mutex_);
        if (!ready_ || !pendingGreet_ || greeted_)
            return;
        greeted_ = true;
    }
    log("sending greeting");
    Background::spawn([](std::weak_ptr<NativeAgent> weak) -> asio::awaitable<void> {
        const auto agent = weak.lock();
        if (!agent)
            co_return;
        std::string text = "Call goal: " + agent->options_.goal + ". Start with a brief greeting.";
        co_await agent->client_->sendClientText(std::move(text));
    }(weak_from_this()));
}

std::string NativeAgent::statsLine() const {
    const auto counters = stats_.read();
    std::string line = "stats: downlink frames=" + std::to_string(counters.dlFrames) +
                       " peak=" + std::to_string(counters.dlPeak) +
                       " | uplink samples=" + std::to_string(counters.ulSamples) +
                       " peak=" + std::to_string(counters.ulPeak);
    std::shared_ptr<AudioPlayback> playback;
    {
        std::lock_guard lock(mutex_);
        playback = playback_;
    }
    if (playback) {
        const auto played = playback->stats();
        line += " | play rendered=" + std::to_string(played.rendered) +
                " underrun=" + std::to_string(played.underruns);
    }
    std::array<char, 32> gain{};
    std::snprintf(gain.data(), gain.size(), " | agc=%.1f", agc_.gain.load(std::memory_order_relaxed));
    return line + gain.data();
}

void NativeAgent::stop() {
    log("final " + statsLine());
    std::unique_ptr<AudioCapture> capture;
    std::shared_ptr<AudioPlayback> playback;
    std::shared_ptr<AudioPlayback> monitor;
    {
        std::lock_guard lock(mutex_);
        stopped_ = true;
        for (Task* task : {&feedTask_, &eventTask_, &statsTask_})
            task->cancel();
        if (chunks_)
            chunks_->finish();
        capture = std::move(capture_);
        playback = std::move(playback_);
        monitor = std::move(monitor_);
        chunks_ = nullptr;
    }
    if (capture)
        capture->stop();
    if (playback)
        playback->stop();
    if (monitor)
        monitor->stop();
    Background::spawn([](std::shared_ptr<NativeAgent> agent) -> asio::awaitable<void> {
        co_await agent->client_->close();
    }(shared_from_this()));
}

} // namespace velto
