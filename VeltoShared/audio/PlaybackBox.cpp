#include "VeltoShared/audio/PlaybackBox.h"

#include <algorithm>

namespace velto {

PlaybackBox::PlaybackBox(std::uint32_t channelCount) : channels(channelCount) {
    ring.reserve(reservedSamples);
}

AudioStatus PlaybackBox::rendered(void* context, std::uint32_t frames, AudioBufferList buffers) {
    if (buffers.data() == nullptr)
        return kAudioUnready;
    auto* box = static_cast<PlaybackBox*>(context);
    for (const auto& buffer : buffers)
        if (buffer.data != nullptr)
            box->fill(frames, buffer);
    return kAudioNoError;
}

void PlaybackBox::fill(std::uint32_t frames, const AudioBuffer& buffer) {
    const std::size_t width = std::max(buffer.channels, 1U);
    std::lock_guard guard(lock);
    const auto queued = std::min<std::size_t>(frames, ring.size() - head);
    const auto* from = ring.data() + head;
    auto* to = buffer.data;
    if (width == 2) { // the usual case, in a form that the compiler vectorises
        for (std::size_t i = 0; i < queued; ++i)
            to[2 * i] = to[2 * i + 1] = from[i];
    } else {
        for (std::size_t i = 0; i < queued; ++i)
            std::fill_n(to + i * width, width, from[i]);
    }
    std::fill_n(to + queued * width, (frames - queued) * width, std::int16_t{0});
    head += queued;
    underrunFrames += static_cast<std::int64_t>(frames - queued);
    if (head > compactionSamples) {
        ring.erase(ring.begin(), ring.begin() + static_cast<std::ptrdiff_t>(head));
        head = 0;
    }
    renderedFrames += frames;
}

} // namespace velto
