#include "VeltoApp/state/RecordingState.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoApp/state/AudioState.h"
#include "VeltoApp/state/RecordingFiles.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/LocalTimestamp.h"

#include <algorithm>
#include <utility>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr double kRate = 16000; // Hz
constexpr std::uint32_t kChannels = 2;
constexpr std::size_t kBlock = 1600; // samples
constexpr auto kBlockTime = 100ms;
/// For the last block to leave the device.
constexpr auto kTail = 500ms;

} // namespace

RecordingState::~RecordingState() {
    endRecording();
    endPlayback();
}

void RecordingState::refresh() {
    MainThread::spawn(list(weak_from_this(), ++lastList_));
}

asio::awaitable<void> RecordingState::list(std::weak_ptr<RecordingState> weak, std::uint64_t number) {
    auto found = co_await Blocking::run(RecordingFiles::list());
    if (const auto self = weak.lock(); self && self->lastList_ == number)
        self->files.set(std::move(found));
}

void RecordingState::start(const std::optional<std::string>& device) {
    if (recording())
        return;
    const auto name = device.value_or(std::string(AudioState::agentMic));
    const auto file = "rec-" + localTimestamp(Clock::shared().now()) + ".wav";
    auto recorder = WavRecorder::open(name, kRate, AppPaths::recordings() / file);
    if (!recorder)
        return status.set("Capture device not found: " + name);
    recorder->start();
    recorder_ = std::move(recorder);
    recording.set(true);
    status.set("Recording " + file);
    const auto limit = std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(maxSeconds));
    autoStop_ = Clock::shared().repeat(limit, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->stop();
    });
}

void RecordingState::stop() {
    endRecording();
    recording.set(false);
    status.set("Saved");
    refresh();
}

void RecordingState::endRecording() {
    autoStop_ = nullptr;
    const auto recorder = std::exchange(recorder_, nullptr);
    if (!recorder)
        return;
    recorder->stop();
    if (const auto trouble = recorder->trouble(); !trouble.empty())
        Helper::log("recording: " + trouble);
}

/// What a feeder works on.
struct RecordingState::Feed {
    std::weak_ptr<AudioPlayback> playback;
    std::shared_ptr<RecordingFiles::Source> source;
    std::size_t from = 0; ///< sample
};

void RecordingState::play(std::string name, std::string device, double from) {
    endPlayback();
    unplayable.set({});
    MainThread::spawn(begin(weak_from_this(), lastPlay_, std::move(name), std::move(device), from));
}

void RecordingState::stopPlaying() {
    if (playing())
        status.set({});
    endPlayback();
}

asio::awaitable<void> RecordingState::begin(std::weak_ptr<RecordingState> weak, std::uint64_t number,
                                            std::string name, std::string device, double from) {
    auto prepared = co_await Blocking::run(RecordingFiles::prepare(name, std::move(device), kRate));
    const auto self = weak.lock();
    if (!self || self->lastPlay_ != number)
        co_return;
    if (prepared.source)
        self->playback_ = AudioPlayback::open(prepared.device, kRate, kChannels);
    if (!self->playback_) {
        self->status.set("Cannot play " + name + " on " + prepared.device);
        self->unplayable.set(name);
        co_return;
    }
    const double first = std::clamp(from * kRate, 0.0, static_cast<double>(prepared.source->sound->size()));
    self->playback_->start();
    self->status.set("Playing " + name);
    self->playing.set(Playing{std::move(name), first / kRate});
    Background::spawn(
        feed(weak, number, {self->playback_, prepared.source, static_cast<std::size_t>(first)}));
}

/// Each block's time is counted from the first one's: waits that end late would add up to gaps. While one
/// plays, the next is read.
asio::awaitable<void> RecordingState::feed(std::weak_ptr<RecordingState> weak, std::uint64_t number,
                                           Feed sound) {
    auto at = sound.from;
    auto block = co_await Blocking::run(RecordingFiles::piece(sound.source, at, kBlock));
    auto next = Clock::shared().steadyNow();
    while (!block.empty()) {
        {
            const auto playback = sound.playback.lock();
            if (!playback)
                co_return;
            playback->write(block);
        }
        MainThread::post([weak, number, position = static_cast<double>(at) / kRate] {
            if (const auto self = weak.lock())
                self->follow(number, position);
        });
        next += kBlockTime;
        at += block.size();
        block = co_await Blocking::run(RecordingFiles::piece(sound.source, at, kBlock));
        co_await Clock::shared().sleep(next - Clock::shared().steadyNow());
    }
    co_await Clock::shared().sleep(kTail);
    MainThread::post([weak, number] {
        if (const auto self = weak.lock())
            self->playedToEnd(number);
    });
}

void RecordingState::follow(std::uint64_t number, double position) {
    if (number == lastPlay_ && playing())
        playing.set(Playing{playing()->name, position});
}

void RecordingState::playedToEnd(std::uint64_t number) {
    if (number != lastPlay_)
        return;
    playback_->stop();
    playing.set(std::nullopt);
}

void RecordingState::endPlayback() {
    ++lastPlay_;
    if (const auto playback = std::exchange(playback_, nullptr))
        playback->stop();
    if (playing())
        playing.set(std::nullopt);
}

} // namespace velto
