#include "VeltoShared/audio/CaptureBox.h"

#include <algorithm>

namespace velto {

void CaptureBox::prepare(std::uint32_t channelCount) {
    channels = channelCount;
    interleaved_.resize(std::size_t{capacityFrames} * channels);
    mono_.resize(capacityFrames);
    abl = AudioBuffer{channels, capacityFrames * channels * 2, interleaved_.data()};
}

AudioStatus CaptureBox::captured(void* context, const RenderContext& render, std::uint32_t frames) {
    auto* box = static_cast<CaptureBox*>(context);
    if (box->unit == nullptr || !box->abl)
        return kAudioUnready;
    return box->deliver(render, frames, *box->abl);
}

AudioStatus CaptureBox::deliver(const RenderContext& render, std::uint32_t frames, AudioBuffer& buffer) {
    if (frames > capacityFrames)
        return kAudioTooManyFrames;
    // A render writes back how much it used; the next one gets the whole buffer again.
    buffer = {channels, capacityFrames * channels * 2, interleaved_.data()};
    if (const auto status = unit->render(render, frames, {&buffer, 1}); status != kAudioNoError)
        return status;
    if (buffer.data == nullptr)
        return kAudioNoError;
    mixDown(buffer.data, frames);
    if (onFrames)
        onFrames({mono_.data(), frames});
    return kAudioNoError;
}

void CaptureBox::mixDown(const std::int16_t* interleaved, std::uint32_t frames) {
    auto* mono = mono_.data();
    if (channels == 2) { // the usual case, in a form that the compiler vectorises
        for (std::size_t i = 0; i < frames; ++i)
            mono[i] = static_cast<std::int16_t>((interleaved[2 * i] + interleaved[2 * i + 1]) / 2);
        return;
    }
    const auto count = static_cast<std::int32_t>(std::max(channels, 1U));
    for (std::uint32_t i = 0; i < frames; ++i) {
        std::int32_t sum = 0;
        for (std::uint32_t c = 0; c < channels; ++c)
            sum += *interleaved++;
        mono[i] = static_cast<std::int16_t>(sum / count);
    }
}

} // namespace velto
