// One stream to or from the system's default device.
#include "rehearsal/callee/PulseDirection.h"

#include <utility>

namespace velto::rehearsal {
namespace {

constexpr pa_usec_t kRetry = 100'000;

} // namespace

PulseDirection::PulseDirection(pa_threaded_mainloop* mainloop, std::uint32_t rate,
                               std::uint32_t bufferMilliseconds, Callbacks callbacks)
    : mainloop_(mainloop), rate_(rate), bufferBytes_(rate * 2 / 1000 * bufferMilliseconds),
      callbacks_(std::move(callbacks)) {
    connect();
}

PulseDirection::~PulseDirection() {
    if (retry_ != nullptr)
        pa_threaded_mainloop_get_api(mainloop_)->time_free(retry_);
    disconnect();
}

void PulseDirection::connect() {
    context_ = pa_context_new(pa_threaded_mainloop_get_api(mainloop_), "Phone");
    pa_context_set_state_callback(
        context_, [](pa_context*, void* self) { static_cast<PulseDirection*>(self)->contextChanged(); },
        this);
    if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        retryLater();
}

void PulseDirection::disconnect() {
    if (stream_ != nullptr) {
        pa_stream_set_state_callback(stream_, nullptr, nullptr);
        pa_stream_set_read_callback(stream_, nullptr, nullptr);
        pa_stream_set_write_callback(stream_, nullptr, nullptr);
        pa_stream_disconnect(stream_);
        pa_stream_unref(std::exchange(stream_, nullptr));
    }
    if (context_ != nullptr) {
        pa_context_set_state_callback(context_, nullptr, nullptr);
        pa_context_disconnect(context_);
        pa_context_unref(std::exchange(context_, nullptr));
    }
}

void PulseDirection::retryLater() {
    // Not from within a callback of the very objects that are to go.
    if (retry_ != nullptr)
        return;
    retry_ = pa_context_rttime_new(
        context_, pa_rtclock_now() + kRetry,
        [](pa_mainloop_api* api, pa_time_event* event, const timeval*, void* self) {
            auto& direction = *static_cast<PulseDirection*>(self);
            api->time_free(event);
            direction.retry_ = nullptr;
            direction.disconnect();
            direction.connect();
        },
        this);
}

void PulseDirection::contextChanged() {
    const auto state = pa_context_get_state(context_);
    if (state == PA_CONTEXT_READY)
        openStream();
    else if (!PA_CONTEXT_IS_GOOD(state))
        retryLater();
}

void PulseDirection::openStream() {
    const pa_sample_spec format{PA_SAMPLE_S16NE, rate_, 1};
    stream_ = pa_stream_new(context_, "Call", &format, nullptr);
    if (stream_ == nullptr)
        return retryLater();
    pa_stream_set_state_callback(
        stream_,
        [](pa_stream* stream, void* self) {
            if (!PA_STREAM_IS_GOOD(pa_stream_get_state(stream)))
                static_cast<PulseDirection*>(self)->retryLater();
        },
        this);
    const auto all = static_cast<std::uint32_t>(-1);
    const auto flags = static_cast<pa_stream_flags_t>(
        PA_STREAM_ADJUST_LATENCY | PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_AUTO_TIMING_UPDATE);
    int status = 0;
    if (callbacks_.arrived) {
        const pa_buffer_attr attributes{all, all, all, all, bufferBytes_};
        pa_stream_set_read_callback(
            stream_, [](pa_stream*, std::size_t, void* self) { static_cast<PulseDirection*>(self)->read(); },
            this);
        status = pa_stream_connect_record(stream_, nullptr, &attributes, flags);
    } else {
        const pa_buffer_attr attributes{all, bufferBytes_, all, all, all};
        pa_stream_set_write_callback(
            stream_,
            [](pa_stream*, std::size_t bytes, void* self) {
                static_cast<PulseDirection*>(self)->write(bytes);
            },
            this);
        status = pa_stream_connect_playback(stream_, nullptr, &attributes, flags, nullptr, nullptr);
    }
    if (status < 0)
        retryLater();
}

std::int64_t PulseDirection::latency() const {
    pa_usec_t microseconds = 0;
    int negative = 0;
    if (pa_stream_get_latency(stream_, &microseconds, &negative) < 0 || negative != 0)
        return 0;
    return static_cast<std::int64_t>(microseconds);
}

void PulseDirection::read() {
    while (pa_stream_readable_size(stream_) > 0) {
        const void* data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(stream_, &data, &bytes) < 0 || bytes == 0)
            return;
        // No data but bytes is a hole: nothing was recorded there.
        if (data != nullptr)
            callbacks_.arrived({static_cast<const std::int16_t*>(data), bytes / 2}, latency());
        pa_stream_drop(stream_);
    }
}

void PulseDirection::write(std::size_t bytes) {
    void* data = nullptr;
    if (pa_stream_begin_write(stream_, &data, &bytes) < 0 || data == nullptr)
        return;
    bytes -= bytes % 2;
    callbacks_.wanted({static_cast<std::int16_t*>(data), bytes / 2}, latency());
    pa_stream_write(stream_, data, bytes, nullptr, 0, PA_SEEK_RELATIVE);
}

} // namespace velto::rehearsal
