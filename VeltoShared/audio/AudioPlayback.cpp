#include "VeltoShared/audio/AudioPlayback.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoShared/audio/AudioDevices.h"

#include <algorithm>

namespace velto {

std::unique_ptr<AudioPlayback> AudioPlayback::open(const std::string& deviceName, double sampleRate,
                                                   std::uint32_t channels) {
    const auto device = AudioDevices::find(deviceName);
    if (!device || !platform().outputUnits->available())
        return nullptr;
    channels = std::max(channels, 1U);
    std::unique_ptr<AudioPlayback> playback(new AudioPlayback(channels));
    playback->unit_ = platform().outputUnits->instantiate();
    if (!playback->unit_)
        return nullptr;
    auto& unit = *playback->unit_;
    playback->box_.unit = &unit;

    unit.enableIO(UnitScope::output, 0, true);
    unit.setCurrentDevice(device->id);
    unit.setStreamFormat(UnitScope::input, 0, {sampleRate, channels});
    unit.setRenderCallback(&PlaybackBox::rendered, &playback->box_);
    unit.initialize();
    return playback;
}

AudioPlayback::~AudioPlayback() {
    stop();
}

void AudioPlayback::start() {
    if (unit_)
        unit_->start();
}

void AudioPlayback::stop() {
    if (!unit_)
        return;
    unit_->stop();
    unit_->uninitialize();
    unit_.reset();
    box_.unit = nullptr;
}

void AudioPlayback::write(std::span<const std::int16_t> samples) {
    std::lock_guard guard(box_.lock);
    box_.ring.insert(box_.ring.end(), samples.begin(), samples.end());
}

void AudioPlayback::flush() {
    std::lock_guard guard(box_.lock);
    box_.ring.clear();
    box_.head = 0;
}

AudioPlayback::Stats AudioPlayback::stats() const {
    std::lock_guard guard(box_.lock);
    return {box_.renderedFrames, box_.underrunFrames};
}

} // namespace velto
