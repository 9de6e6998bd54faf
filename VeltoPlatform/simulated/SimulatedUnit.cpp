#include "VeltoPlatform/simulated/SimulatedUnit.h"

#include "VeltoPlatform/simulated/SimulatedAudio.h"

#include <algorithm>

namespace velto {
namespace {

std::string text(UnitScope scope) {
    switch (scope) {
    case UnitScope::global:
        return "global";
    case UnitScope::input:
        return "input";
    case UnitScope::output:
        break;
    }
    return "output";
}

} // namespace

SimulatedUnit::SimulatedUnit(SimulatedAudio& audio) : audio_(audio) {
    audio_.units_.push_back(this);
}

SimulatedUnit::~SimulatedUnit() {
    record("dispose");
    std::lock_guard guard(audio_.mutex_);
    std::erase(audio_.units_, this);
}

AudioStatus SimulatedUnit::record(std::string call) {
    std::lock_guard guard(audio_.mutex_);
    audio_.unitCalls_.push_back(std::move(call));
    return kAudioNoError;
}

AudioStatus SimulatedUnit::enableIO(UnitScope scope, std::uint32_t element, bool on) {
    return record("enableIO " + text(scope) + ' ' + std::to_string(element) + (on ? " on" : " off"));
}

AudioStatus SimulatedUnit::setCurrentDevice(AudioObjectID device) {
    std::lock_guard guard(audio_.mutex_);
    record("setCurrentDevice " + std::to_string(device));
    const auto* found = audio_.device(device);
    if (found == nullptr)
        return kAudioUnready;
    device_ = found->name;
    return kAudioNoError;
}

AudioStatus SimulatedUnit::setStreamFormat(UnitScope scope, std::uint32_t element,
                                           const StreamFormat& format) {
    std::lock_guard guard(audio_.mutex_);
    format_ = format;
    return record("setStreamFormat " + text(scope) + ' ' + std::to_string(element) + ' ' +
                  std::to_string(static_cast<int>(format.sampleRate)) + " Hz " +
                  std::to_string(format.channels) + " ch");
}

AudioStatus SimulatedUnit::setInputCallback(InputCallback callback, void* context) {
    std::lock_guard guard(audio_.mutex_);
    input_ = callback;
    context_ = context;
    return record("setInputCallback");
}

AudioStatus SimulatedUnit::setRenderCallback(RenderCallback callback, void* context) {
    std::lock_guard guard(audio_.mutex_);
    output_ = callback;
    context_ = context;
    return record("setRenderCallback");
}

AudioStatus SimulatedUnit::initialize() {
    std::lock_guard guard(audio_.mutex_);
    initialized_ = true;
    return record("initialize");
}

AudioStatus SimulatedUnit::start() {
    std::lock_guard guard(audio_.mutex_);
    running_ = initialized_ && !audio_.faults.silentUnits;
    return record("start");
}

AudioStatus SimulatedUnit::stop() {
    std::lock_guard guard(audio_.mutex_);
    running_ = false;
    return record("stop");
}

AudioStatus SimulatedUnit::uninitialize() {
    std::lock_guard guard(audio_.mutex_);
    initialized_ = false;
    return record("uninitialize");
}

AudioStatus SimulatedUnit::render(const RenderContext&, std::uint32_t frames, AudioBufferList buffers) {
    if (audio_.faults.renderStatus != kAudioNoError)
        return audio_.faults.renderStatus;
    if (buffers.empty() || buffers[0].data == nullptr)
        return kAudioUnready;
    const auto bytes = frames * format_.bytesPerFrame();
    if (buffers[0].byteSize < bytes)
        return kAudioTooManyFrames;
    const auto count = std::min<std::size_t>(captured_.size(), bytes / 2);
    std::ranges::copy(captured_.first(count), buffers[0].data);
    buffers[0].byteSize = bytes;
    if (audio_.faults.renderWithoutData)
        buffers[0].data = nullptr;
    return kAudioNoError;
}

bool SimulatedUnit::runsOn(std::string_view device) const {
    return running_ && device_ == device && audio_.device(device) != nullptr;
}

bool SimulatedUnit::captures(std::string_view device) const {
    return input_ != nullptr && runsOn(device);
}

bool SimulatedUnit::plays(std::string_view device) const {
    return output_ != nullptr && runsOn(device);
}

AudioStatus SimulatedUnit::deliver(std::span<const std::int16_t> interleaved) {
    captured_ = interleaved;
    const auto frames = static_cast<std::uint32_t>(interleaved.size() / std::max(format_.channels, 1U));
    const auto status = input_(context_, {0, 0, 1}, frames);
    captured_ = {};
    return status;
}

std::vector<std::int16_t> SimulatedUnit::pull(std::uint32_t frames) {
    std::vector<std::int16_t> samples(std::size_t{frames} * format_.channels);
    AudioBuffer buffer{format_.channels, static_cast<std::uint32_t>(samples.size() * 2), samples.data()};
    output_(context_, frames, {&buffer, 1});
    return samples;
}

} // namespace velto
