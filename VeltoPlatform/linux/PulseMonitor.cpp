#include "VeltoPlatform/linux/PulseMonitor.h"

#include "VeltoPlatform/linux/PulseStream.h"

#include <pulse/def.h>
#include <pulse/rtclock.h>
#include <pulse/timeval.h>

namespace velto {
namespace {

constexpr pa_usec_t fragment = 10 * PA_USEC_PER_MSEC;

JitterBuffer::Time clockTime() {
    return JitterBuffer::Time(pa_rtclock_now());
}

} // namespace

PulseMonitor::PulseMonitor(const PulseServer& server, const PulsePlayer& player, const StreamFormat& format)
    : player_(player.index), sink_(player.sink), format_(format), madeAt_(pa_rtclock_now()),
      buffer_(PulseStream::serverFormat(format).rate, format.channels), context_(server.connect()) {
    pa_context_set_state_callback(
        context_,
        [](pa_context* context, void* self) {
            if (pa_context_get_state(context) == PA_CONTEXT_READY)
                static_cast<PulseMonitor*>(self)->listen();
        },
        this);
}

void PulseMonitor::listen() {
    const auto wanted = PulseStream::serverFormat(format_);
    pa_channel_map map;
    pa_channel_map_init_extend(&map, wanted.channels, PA_CHANNEL_MAP_DEFAULT);
    stream_ = pa_stream_new(context_, "Velto tap", &wanted, &map);
    if (stream_ == nullptr)
        return;
    pa_stream_set_monitor_stream(stream_, player_);
    pa_stream_set_read_callback(
        stream_, [](pa_stream*, std::size_t, void* self) { static_cast<PulseMonitor*>(self)->record(); },
        this);
    constexpr auto unset = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr buffer{unset, unset, unset, unset,
                                static_cast<std::uint32_t>(pa_usec_to_bytes(fragment, &wanted))};
    pa_stream_connect_record(stream_, nullptr, &buffer,
                             static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE |
                                                            PA_STREAM_START_UNMUTED));
}

PulseMonitor::~PulseMonitor() {
    if (stream_ != nullptr) {
        pa_stream_set_read_callback(stream_, nullptr, nullptr);
        pa_stream_unref(stream_);
    }
    pa_context_set_state_callback(context_, nullptr, nullptr);
    pa_context_disconnect(context_);
    pa_context_unref(context_);
}

PulseMonitor::State PulseMonitor::state() const {
    if (PA_CONTEXT_IS_GOOD(pa_context_get_state(context_)) &&
        (stream_ == nullptr || PA_STREAM_IS_GOOD(pa_stream_get_state(stream_))))
        return State::running;
    const auto error = pa_context_errno(context_);
    const bool isLost = error == PA_ERR_NOENTITY || error == PA_ERR_KILLED || error == PA_ERR_PROTOCOL;
    return isLost ? State::lost : State::refused;
}

void PulseMonitor::record() {
    const void* data = nullptr;
    std::size_t size = 0;
    while (pa_stream_readable_size(stream_) > 0 && pa_stream_peek(stream_, &data, &size) >= 0 && size > 0) {
        if (data != nullptr) // none: a hole, where the server has lost sound
            buffer_.push({static_cast<const std::int16_t*>(data), size / sizeof(std::int16_t)}, clockTime());
        pa_stream_drop(stream_);
    }
}

void PulseMonitor::addTo(std::span<std::int32_t> sum) {
    buffer_.addTo(sum, clockTime());
}

} // namespace velto
