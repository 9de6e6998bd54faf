#include "VeltoPlatform/linux/PulseStream.h"

#include <pulse/rtclock.h>
#include <pulse/timeval.h>

#include <algorithm>
#include <cmath>

namespace velto {
namespace {

constexpr pa_usec_t playbackLatency = 20 * PA_USEC_PER_MSEC;
constexpr pa_usec_t captureFragment = 10 * PA_USEC_PER_MSEC;
/// For this long a capture is held to real time, give or take the slack; later the server paces it.
constexpr pa_usec_t pacedStart = PA_USEC_PER_SEC;
constexpr pa_usec_t pacingSlack = 40 * PA_USEC_PER_MSEC;

constexpr auto common = static_cast<pa_stream_flags_t>(
    PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE | PA_STREAM_INTERPOLATE_TIMING |
    PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_START_UNMUTED);

/// Its callbacks will not come any more.
void release(pa_stream* stream) {
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_write_callback(stream, nullptr, nullptr);
    // While the server is still making a stream there is no way to end it, and forgotten it would run on.
    if (pa_stream_get_state(stream) == PA_STREAM_CREATING) {
        pa_stream_set_state_callback(
            stream,
            [](pa_stream* made, void*) {
                if (pa_stream_get_state(made) != PA_STREAM_CREATING)
                    release(made);
            },
            nullptr);
        return;
    }
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
}

} // namespace

pa_sample_spec PulseStream::serverFormat(const StreamFormat& format) {
    return {PA_SAMPLE_S16NE, static_cast<std::uint32_t>(std::lround(format.sampleRate)),
            static_cast<std::uint8_t>(format.channels)};
}

bool PulseStream::canCarry(const StreamFormat& format) {
    if (!(format.sampleRate >= 100 && format.sampleRate <= PA_RATE_MAX) || format.channels < 1 ||
        format.channels > PA_CHANNELS_MAX)
        return false;
    const auto wanted = serverFormat(format);
    return pa_sample_spec_valid(&wanted) != 0;
}

PulseStream::PulseStream(pa_context* context, AudioDirection direction, const std::string& device,
                         const StreamFormat& format, const PulseStreamCallbacks& callbacks)
    : format_(format), callbacks_(callbacks), movedAt_(pa_rtclock_now()) {
    if (direction == AudioDirection::input)
        period_.resize(static_cast<std::size_t>(serverFormat(format).rate / 100) * format.channels);
    open(context, direction, device);
}

PulseStream::~PulseStream() {
    if (stream_ != nullptr)
        release(stream_);
}

void PulseStream::open(pa_context* context, AudioDirection direction, const std::string& device) {
    const auto wanted = serverFormat(format_);
    pa_channel_map map;
    pa_channel_map_init_extend(&map, wanted.channels, PA_CHANNEL_MAP_DEFAULT);
    stream_ = pa_stream_new(context, "Velto", &wanted, &map);
    if (stream_ == nullptr)
        return;
    pa_buffer_attr buffer;
    std::fill_n(reinterpret_cast<unsigned char*>(&buffer), sizeof buffer, static_cast<unsigned char>(0xff));
    if (direction == AudioDirection::input) {
        buffer.fragsize = static_cast<std::uint32_t>(pa_usec_to_bytes(captureFragment, &wanted));
        pa_stream_set_read_callback(
            stream_, [](pa_stream*, std::size_t, void* self) { static_cast<PulseStream*>(self)->record(); },
            this);
        pa_stream_connect_record(stream_, device.c_str(), &buffer, common);
        return;
    }
    buffer.tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(playbackLatency, &wanted));
    pa_stream_set_write_callback(
        stream_,
        [](pa_stream*, std::size_t bytes, void* self) { static_cast<PulseStream*>(self)->play(bytes); },
        this);
    // The server would otherwise give back the volume that some earlier stream of ours had; relative, because
    // a server with flat volumes would turn the speaker itself up.
    pa_cvolume full;
    pa_cvolume_set(&full, wanted.channels, PA_VOLUME_NORM);
    pa_stream_connect_playback(stream_, device.c_str(), &buffer,
                               static_cast<pa_stream_flags_t>(common | PA_STREAM_RELATIVE_VOLUME), &full,
                               nullptr);
}

PulseStream::State PulseStream::state() const {
    if (stream_ == nullptr)
        return State::ended;
    switch (pa_stream_get_state(stream_)) {
    case PA_STREAM_CREATING:
        return State::opening;
    case PA_STREAM_READY:
        return State::running;
    default:
        return State::ended;
    }
}

pa_usec_t PulseStream::quietFor() const {
    if (state() == State::running && pa_stream_is_suspended(stream_) > 0)
        return 0;
    return pa_rtclock_now() - movedAt_;
}

void PulseStream::play(std::size_t bytes) {
    movedAt_ = pa_rtclock_now();
    moved_ = true;
    const std::size_t frameBytes = format_.bytesPerFrame();
    while (bytes >= frameBytes) {
        void* memory = nullptr;
        std::size_t size = bytes;
        if (pa_stream_begin_write(stream_, &memory, &size) < 0 || memory == nullptr)
            return;
        size = std::min(size, bytes) / frameBytes * frameBytes;
        if (size == 0) {
            pa_stream_cancel_write(stream_);
            return;
        }
        AudioBuffer buffer{format_.channels, static_cast<std::uint32_t>(size),
                           static_cast<std::int16_t*>(memory)};
        const auto frames = static_cast<std::uint32_t>(size / frameBytes);
        if (callbacks_.render(callbacks_.context, frames, {&buffer, 1}) != kAudioNoError)
            std::fill_n(static_cast<std::int16_t*>(memory), size / 2, std::int16_t{0});
        if (pa_stream_write(stream_, memory, size, nullptr, 0, PA_SEEK_RELATIVE) < 0)
            return;
        bytes -= size;
    }
}

void PulseStream::record() {
    movedAt_ = pa_rtclock_now();
    moved_ = true;
    const std::size_t frameBytes = format_.bytesPerFrame();
    auto stale = staleFrames(pa_stream_readable_size(stream_) / frameBytes) * frameBytes;
    const void* data = nullptr;
    std::size_t size = 0;
    while (pa_stream_readable_size(stream_) > 0 && pa_stream_peek(stream_, &data, &size) >= 0 && size > 0) {
        const auto skipped = std::min(stale, size);
        stale -= skipped;
        if (data != nullptr) // none: a hole, where the server has lost sound
            gather(static_cast<const std::int16_t*>(data) + skipped / 2, (size - skipped) / 2);
        pa_stream_drop(stream_);
    }
}

/// How many of the readable frames are older than the stream: sound cannot arrive faster than time passes.
std::size_t PulseStream::staleFrames(std::size_t readable) {
    if (runningSince_ == 0)
        runningSince_ = movedAt_;
    const auto age = movedAt_ - runningSince_;
    if (age > pacedStart)
        return 0;
    const auto wanted = serverFormat(format_);
    const auto possible = pa_usec_to_bytes(age + pacingSlack, &wanted) / format_.bytesPerFrame();
    const auto room = possible > takenFrames_ ? possible - takenFrames_ : 0;
    const auto taken = std::min<std::size_t>(readable, room);
    takenFrames_ += taken;
    return readable - taken;
}

void PulseStream::gather(const std::int16_t* samples, std::size_t count) {
    while (count > 0) {
        const auto part = std::min(count, period_.size() - gathered_);
        std::copy_n(samples, part, period_.begin() + static_cast<std::ptrdiff_t>(gathered_));
        samples += part;
        count -= part;
        gathered_ += part;
        if (gathered_ < period_.size())
            return;
        callbacks_.input(callbacks_.context, {0, movedAt_ * PA_NSEC_PER_USEC, 1},
                         static_cast<std::uint32_t>(gathered_ / format_.channels));
        gathered_ = 0;
    }
}

AudioStatus PulseStream::pull(std::uint32_t frames, AudioBufferList buffers) {
    return handOver({period_.data(), gathered_}, format_, frames, buffers);
}

AudioStatus PulseStream::handOver(std::span<const std::int16_t> ready, const StreamFormat& format,
                                  std::uint32_t frames, AudioBufferList buffers) {
    if (buffers.empty() || buffers[0].data == nullptr)
        return kAudioUnready;
    const auto bytes = std::size_t{frames} * format.bytesPerFrame();
    if (buffers[0].byteSize < bytes)
        return kAudioTooManyFrames;
    if (bytes / 2 > ready.size())
        return kAudioUnready;
    std::ranges::copy(ready.first(bytes / 2), buffers[0].data);
    buffers[0].byteSize = static_cast<std::uint32_t>(bytes);
    return kAudioNoError;
}

} // namespace velto
