#include "VeltoShared/audio/AudioCapture.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoShared/audio/AudioDevices.h"

#include <algorithm>

namespace velto {

std::unique_ptr<AudioCapture>
AudioCapture::open(const std::string& deviceName, double sampleRate, std::uint32_t channels,
                   std::function<void(std::span<const std::int16_t>)> onFrames) {
    const auto device = AudioDevices::find(deviceName);
    if (!device || !platform().outputUnits->available())
        return nullptr;
    std::unique_ptr<AudioCapture> capture(new AudioCapture);
    auto& box = capture->box_;
    box.onFrames = std::move(onFrames);
    capture->unit_ = platform().outputUnits->instantiate();
    if (!capture->unit_)
        return nullptr;
    auto& unit = *capture->unit_;
    box.unit = &unit;
    channels = std::max(channels, 1U);

    unit.enableIO(UnitScope::output, 0, false);
    unit.enableIO(UnitScope::input, 1, true);
    unit.setCurrentDevice(device->id);
    unit.setStreamFormat(UnitScope::output, 1, {sampleRate, channels});
    box.prepare(channels);
    unit.setInputCallback(&CaptureBox::captured, &box);
    unit.initialize();
    return capture;
}

AudioCapture::~AudioCapture() {
    stop();
}

void AudioCapture::start() {
    if (unit_)
        unit_->start();
}

void AudioCapture::stop() {
    if (!unit_)
        return;
    unit_->stop();
    unit_->uninitialize();
    unit_.reset();
    box_.unit = nullptr;
}

} // namespace velto
