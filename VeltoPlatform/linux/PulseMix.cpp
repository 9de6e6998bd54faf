#include "VeltoPlatform/linux/PulseMix.h"

#include <pulse/error.h>
#include <pulse/rtclock.h>
#include <pulse/timeval.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace velto {
namespace {

/// A player whose monitor ended is tried again after this.
constexpr pa_usec_t retryAfter = 250 * PA_USEC_PER_MSEC;
/// A sound thread that was held up for longer does not make up for it.
constexpr pa_usec_t mostOverdue = 200 * PA_USEC_PER_MSEC;
/// Each is a connection, and servers take 64 of all programs together.
constexpr std::size_t mostMonitors = 16;

} // namespace

PulseMix::PulseMix(PulseServer& server, std::shared_ptr<const PulseTapDevice> device,
                   const StreamFormat& format, const PulseStreamCallbacks& callbacks)
    : server_(server), device_(std::move(device)), tap_(device_->tap), format_(format),
      callbacks_(callbacks) {
    const auto rate = PulseStream::serverFormat(format).rate;
    sum_.resize(std::size_t{rate / 100} * format.channels);
    period_.resize(sum_.size());
    server_.add(*this);
    if (tap_)
        tap_->add(*this);
    begin();
}

PulseMix::~PulseMix() {
    if (tap_)
        tap_->remove(*this);
    server_.remove(*this);
    end();
}

AudioStatus PulseMix::pull(std::uint32_t frames, AudioBufferList buffers) {
    return PulseStream::handOver(period_, format_, frames, buffers);
}

void PulseMix::connected(AudioDirection direction) {
    if (direction != AudioDirection::input)
        return;
    end();
    begin();
}

/// The timer lives as long as the input connection.
void PulseMix::begin() {
    auto* context = server_.context(AudioDirection::input);
    if (context == nullptr || !device_->tap)
        return;
    beganAt_ = pa_rtclock_now();
    deliveredFrames_ = 0;
    timer_ = pa_context_rttime_new(
        context, periodEnd(),
        [](pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
            static_cast<PulseMix*>(self)->deliverDue();
        },
        this);
    playersChanged();
}

void PulseMix::end() {
    if (timer_ != nullptr)
        server_.loop().time_free(timer_);
    timer_ = nullptr;
    monitors_.clear();
}

void PulseMix::tick() {
    if (timer_ == nullptr)
        return;
    if (server_.context(AudioDirection::input) == nullptr || !device_->tap)
        end();
    else
        playersChanged();
}

void PulseMix::playersChanged() {
    if (timer_ == nullptr || server_.context(AudioDirection::input) == nullptr)
        return;
    const auto& players = tap_->players();
    std::erase_if(monitors_, [&](const auto& monitor) {
        return std::ranges::find(players, monitor.first, &PulsePlayer::index) == players.end();
    });
    for (const auto& player : players)
        if (mayFollow(player))
            monitors_[player.index] = std::make_unique<PulseMonitor>(server_, player, format_);
}

/// Whether a monitor is to be made, for the first time or again.
bool PulseMix::mayFollow(const PulsePlayer& player) {
    const auto found = monitors_.find(player.index);
    const bool isNew = found == monitors_.end();
    const auto state = isNew ? PulseMonitor::State::lost : found->second->state();
    const bool isOneTooMany = isNew && monitors_.size() >= mostMonitors;
    if ((isOneTooMany || state == PulseMonitor::State::refused) && refused_.insert(player.index).second)
        server_.log("sound: tap: a stream of the tapped program cannot be heard");
    if (isNew || state == PulseMonitor::State::running)
        return isNew && !isOneTooMany;
    const auto& monitor = *found->second;
    return monitor.sink() != player.sink || pa_rtclock_now() - monitor.madeAt() > retryAfter;
}

/// The end of the next period to deliver.
pa_usec_t PulseMix::periodEnd() const {
    const auto frames = deliveredFrames_ + period_.size() / format_.channels;
    return beganAt_ + frames * PA_USEC_PER_SEC / PulseStream::serverFormat(format_).rate;
}

void PulseMix::deliverDue() {
    auto* context = server_.context(AudioDirection::input);
    if (context == nullptr || !device_->tap) // the tick puts things away
        return;
    if (pa_rtclock_now() - beganAt_ > periodEnd() - beganAt_ + mostOverdue) {
        beganAt_ = pa_rtclock_now();
        deliveredFrames_ = 0;
    }
    while (periodEnd() <= pa_rtclock_now())
        deliverPeriod();
    pa_context_rttime_restart(context, timer_, periodEnd());
}

void PulseMix::deliverPeriod() {
    std::ranges::fill(sum_, 0);
    for (const auto& [index, monitor] : monitors_)
        monitor->addTo(sum_);
    std::ranges::transform(sum_, period_.begin(), [](std::int32_t sample) {
        using Limits = std::numeric_limits<std::int16_t>;
        return static_cast<std::int16_t>(std::clamp<std::int32_t>(sample, Limits::min(), Limits::max()));
    });
    const auto frames = static_cast<std::uint32_t>(period_.size() / format_.channels);
    callbacks_.input(callbacks_.context, {0, periodEnd() * PA_NSEC_PER_USEC, 1}, frames);
    deliveredFrames_ += frames;
}

} // namespace velto
