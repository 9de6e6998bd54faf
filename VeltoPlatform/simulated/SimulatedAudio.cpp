#include "VeltoPlatform/simulated/SimulatedAudio.h"

#include "VeltoPlatform/simulated/SimulatedUnit.h"

#include <algorithm>

namespace velto {
namespace {

constexpr std::uint32_t stepFrames = 480; // 10 ms at 48 kHz

std::int16_t clipped(int value) {
    return static_cast<std::int16_t>(std::clamp(value, -32768, 32767));
}

void add(std::vector<int>& sum, const std::vector<int>& samples) {
    sum.resize(std::max(sum.size(), samples.size()));
    std::ranges::transform(samples, sum, sum.begin(), std::plus<>());
}

std::vector<int> takeStep(std::vector<std::int16_t>& queue) {
    const auto end =
        queue.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(queue.size(), stepFrames));
    std::vector<int> samples(queue.begin(), end);
    queue.erase(queue.begin(), end);
    samples.resize(stepFrames);
    return samples;
}

std::uint32_t stepFramesAt(double sampleRate) {
    return static_cast<std::uint32_t>(sampleRate / 100);
}

} // namespace

AudioObjectID SimulatedAudio::addDevice(const std::string& name, std::uint32_t inputChannels,
                                        std::uint32_t outputChannels) {
    SimulatedDevice device{0, name, {}, {}};
    if (inputChannels > 0)
        device.inputStreams.push_back(inputChannels);
    if (outputChannels > 0)
        device.outputStreams.push_back(outputChannels);
    return addDevice(std::move(device));
}

AudioObjectID SimulatedAudio::addDevice(SimulatedDevice device) {
    std::lock_guard guard(mutex_);
    if (device.id == 0)
        device.id = nextID_++;
    return devices_.emplace_back(std::move(device)).id;
}

void SimulatedAudio::removeDevice(std::string_view name) {
    std::lock_guard guard(mutex_);
    for (auto& [direction, id] : defaults_)
        if (const auto* current = device(id); current != nullptr && current->name == name)
            id = 0;
    std::erase_if(devices_, [&](const SimulatedDevice& device) { return device.name == name; });
}

void SimulatedAudio::addUsualDevices() {
    std::lock_guard guard(mutex_);
    defaults_[AudioDirection::output] = addDevice("Speaker", 0, 2);
    defaults_[AudioDirection::input] = addDevice("Microphone", 2, 0);
    addDevice("VeltoVoice 2ch Feed", 0, 2);
    addDevice("VeltoVoice 2ch Mic", 2, 0);
    addDevice("VeltoLoop 2ch", 2, 2);
    connect("VeltoVoice 2ch Feed", "VeltoVoice 2ch Mic");
    connect("VeltoLoop 2ch", "VeltoLoop 2ch");
}

void SimulatedAudio::connect(const std::string& output, const std::string& input) {
    std::lock_guard guard(mutex_);
    connections_.emplace_back(output, input);
}

void SimulatedAudio::setProcess(pid_t pid, AudioObjectID object, bool runningInput) {
    std::lock_guard guard(mutex_);
    processes_[pid] = {object, runningInput};
}

void SimulatedAudio::play(AudioObjectID process, std::span<const std::int16_t> samples) {
    std::lock_guard guard(mutex_);
    auto& queue = processSounds_[process];
    queue.insert(queue.end(), samples.begin(), samples.end());
}

void SimulatedAudio::serverReturns() {
    std::lock_guard guard(mutex_);
    if (returned_)
        returned_();
}

AudioStatus SimulatedAudio::deliver(std::string_view device, std::span<const std::int16_t> interleaved) {
    std::lock_guard guard(mutex_);
    AudioStatus status = kAudioUnready;
    for (auto* unit : units_)
        if (unit->captures(device))
            status = unit->deliver(interleaved);
    return status;
}

std::vector<std::int16_t> SimulatedAudio::pull(std::string_view device, std::uint32_t frames) {
    std::lock_guard guard(mutex_);
    std::vector<std::int16_t> sum;
    for (auto* unit : units_) {
        if (!unit->plays(device))
            continue;
        const auto samples = unit->pull(frames);
        sum.resize(std::max(sum.size(), samples.size()));
        for (std::size_t i = 0; i < samples.size(); ++i)
            sum[i] = clipped(sum[i] + samples[i]);
    }
    return sum;
}

void SimulatedAudio::advance(std::chrono::milliseconds duration) {
    for (auto left = duration.count(); left >= 10; left -= 10) {
        std::lock_guard guard(mutex_);
        step();
    }
}

/// Rates are changed by taking the nearest earlier sample, which keeps levels and marks of tones.
void SimulatedAudio::step() {
    std::map<std::string, std::vector<int>> played;
    for (auto* unit : units_) {
        for (const auto& device : devices_) {
            if (!unit->plays(device.name))
                continue;
            const auto channels = unit->format().channels;
            const auto frames = stepFramesAt(unit->format().sampleRate);
            const auto samples = unit->pull(frames);
            auto& sum = played[device.name];
            sum.resize(stepFrames);
            for (std::uint32_t i = 0; i < stepFrames; ++i)
                sum[i] += samples[std::size_t{i * frames / stepFrames} * channels];
        }
    }
    const auto processes = stepProcesses(played);
    for (const auto& device : devices_) {
        std::vector<int> arriving(stepFrames);
        for (const auto& [output, input] : connections_)
            if (const auto sum = played.find(output); input == device.name && sum != played.end())
                add(arriving, sum->second);
        add(arriving, takeStep(spoken_[device.name]));
        for (const auto process : taps.processesOf(device.id))
            if (const auto sound = processes.find(process); sound != processes.end())
                add(arriving, sound->second);
        for (auto* unit : units_) {
            if (!unit->captures(device.name))
                continue;
            const auto channels = unit->format().channels;
            const auto frames = stepFramesAt(unit->format().sampleRate);
            std::vector<std::int16_t> samples;
            for (std::uint32_t i = 0; i < frames; ++i)
                samples.insert(samples.end(), channels, clipped(arriving[i * stepFrames / frames]));
            unit->deliver(samples);
        }
    }
    for (const auto& [device, sum] : played)
        std::ranges::transform(sum, std::back_inserter(heard_[device]), clipped);
}

std::map<AudioObjectID, std::vector<int>>
SimulatedAudio::stepProcesses(std::map<std::string, std::vector<int>>& played) {
    std::map<AudioObjectID, std::vector<int>> sounds;
    const auto* output = device(defaults_[AudioDirection::output]);
    for (auto& [process, queue] : processSounds_) {
        sounds[process] = takeStep(queue);
        if (output != nullptr && !taps.mutes(process))
            add(played[output->name], sounds[process]);
    }
    return sounds;
}

void SimulatedAudio::speak(const std::string& input, std::span<const std::int16_t> samples) {
    std::lock_guard guard(mutex_);
    auto& queue = spoken_[input];
    queue.insert(queue.end(), samples.begin(), samples.end());
}

std::vector<std::int16_t> SimulatedAudio::takeHeard(const std::string& output) {
    std::lock_guard guard(mutex_);
    return std::exchange(heard_[output], {});
}

std::vector<std::string> SimulatedAudio::unitCalls() {
    std::lock_guard guard(mutex_);
    return unitCalls_;
}

std::vector<std::string> SimulatedAudio::defaultChanges() {
    std::lock_guard guard(mutex_);
    return defaultChanges_;
}

std::size_t SimulatedAudio::runningUnits() {
    std::lock_guard guard(mutex_);
    return static_cast<std::size_t>(std::ranges::count_if(units_, &SimulatedUnit::running));
}

const SimulatedDevice* SimulatedAudio::device(AudioObjectID id) const {
    const auto found = std::ranges::find(devices_, id, &SimulatedDevice::id);
    return found == devices_.end() ? nullptr : &*found;
}

const SimulatedDevice* SimulatedAudio::device(std::string_view name) const {
    const auto found = std::ranges::find(devices_, name, &SimulatedDevice::name);
    return found == devices_.end() ? nullptr : &*found;
}

std::optional<std::vector<AudioObjectID>> SimulatedAudio::devices() {
    std::lock_guard guard(mutex_);
    if (faults.deviceListFails)
        return std::nullopt;
    std::vector<AudioObjectID> list;
    std::ranges::transform(devices_, std::back_inserter(list), &SimulatedDevice::id);
    return list;
}

std::optional<std::string> SimulatedAudio::deviceName(AudioObjectID id) {
    std::lock_guard guard(mutex_);
    const auto* found = device(id);
    if (found == nullptr || faults.nameFails.contains(id))
        return std::nullopt;
    return found->name;
}

std::optional<std::vector<std::uint32_t>> SimulatedAudio::streamConfiguration(AudioObjectID id,
                                                                              AudioDirection direction) {
    std::lock_guard guard(mutex_);
    const auto* found = device(id);
    if (found == nullptr || faults.configurationFails.contains(id))
        return std::nullopt;
    return direction == AudioDirection::input ? found->inputStreams : found->outputStreams;
}

std::optional<AudioObjectID> SimulatedAudio::defaultDevice(AudioDirection direction) {
    std::lock_guard guard(mutex_);
    if (faults.defaultReadFails)
        return std::nullopt;
    return defaults_[direction];
}

bool SimulatedAudio::setDefaultDevice(AudioDirection direction, AudioObjectID id) {
    std::lock_guard guard(mutex_);
    const auto* found = device(id);
    if (found == nullptr || faults.refusedAsDefault.contains(id))
        return false;
    if ((direction == AudioDirection::input ? found->inputStreams : found->outputStreams).empty())
        return false;
    defaults_[direction] = id;
    defaultChanges_.push_back((direction == AudioDirection::input ? "input " : "output ") +
                              std::to_string(id));
    return true;
}

std::optional<AudioObjectID> SimulatedAudio::processObject(pid_t pid) {
    std::lock_guard guard(mutex_);
    if (faults.processReadFails)
        return std::nullopt;
    const auto found = processes_.find(pid);
    return found == processes_.end() ? 0 : found->second.first;
}

std::optional<bool> SimulatedAudio::processIsRunningInput(AudioObjectID process) {
    std::lock_guard guard(mutex_);
    if (faults.processReadFails)
        return std::nullopt;
    for (const auto& [pid, state] : processes_)
        if (state.first == process)
            return state.second;
    return std::nullopt;
}

void SimulatedAudio::observeReturn(std::function<void()> returned) {
    std::lock_guard guard(mutex_);
    returned_ = std::move(returned);
}

bool SimulatedAudio::available() {
    std::lock_guard guard(mutex_);
    return !faults.noUnitComponent;
}

std::unique_ptr<OutputUnit> SimulatedAudio::instantiate() {
    std::lock_guard guard(mutex_);
    if (faults.instantiationFails)
        return nullptr;
    return std::make_unique<SimulatedUnit>(*this);
}

} // namespace velto
