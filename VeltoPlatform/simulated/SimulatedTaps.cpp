#include "VeltoPlatform/simulated/SimulatedTaps.h"

#include "VeltoPlatform/simulated/SimulatedAudio.h"
#include "VeltoPlatform/simulated/SimulatedUnit.h"

#include <algorithm>
#include <utility>

namespace velto {
namespace {

std::string uidOf(AudioObjectID tap) {
    return "simulated tap " + std::to_string(tap);
}

} // namespace

SimulatedTaps::SimulatedTaps(SimulatedAudio& audio) : audio_(audio) {}

std::optional<AudioObjectID> SimulatedTaps::createProcessTap(const ProcessTapDescription& description) {
    std::lock_guard guard(audio_.mutex_);
    if (faults.noPermission)
        return std::nullopt;
    if (faults.tapIsNone)
        return 0;
    const auto isKnown = [&](AudioObjectID process) {
        return std::ranges::any_of(audio_.processes_,
                                   [&](const auto& known) { return known.second.first == process; });
    };
    if (!std::ranges::all_of(description.processes, isKnown))
        return std::nullopt;
    const auto tap = audio_.nextID_++;
    taps_[tap] = description;
    return tap;
}

bool SimulatedTaps::destroyProcessTap(AudioObjectID tap) {
    std::lock_guard guard(audio_.mutex_);
    if (faults.destroyingFails || taps_.erase(tap) == 0)
        return false;
    destroyed_.push_back("tap " + std::to_string(tap));
    return true;
}

std::optional<std::string> SimulatedTaps::tapUID(AudioObjectID tap) {
    std::lock_guard guard(audio_.mutex_);
    if (faults.uidFails || !taps_.contains(tap))
        return std::nullopt;
    return uidOf(tap);
}

std::optional<AudioObjectID>
SimulatedTaps::createAggregateDevice(const AggregateDeviceDescription& description) {
    std::lock_guard guard(audio_.mutex_);
    if (faults.aggregateFails)
        return std::nullopt;
    if (faults.aggregateIsNone)
        return 0;
    const auto exists = [&](const std::string& uid) {
        return std::ranges::any_of(taps_, [&](const auto& tap) { return uidOf(tap.first) == uid; });
    };
    const auto isTaken = [&](const auto& other) { return other.second.uid == description.uid; };
    if (!std::ranges::all_of(description.taps, exists) || std::ranges::any_of(aggregates_, isTaken))
        return std::nullopt;
    const auto device = audio_.addDevice(description.name, 2, 0);
    aggregates_[device] = description;
    return device;
}

bool SimulatedTaps::destroyAggregateDevice(AudioObjectID device) {
    std::lock_guard guard(audio_.mutex_);
    if (faults.destroyingFails || aggregates_.erase(device) == 0)
        return false;
    std::erase_if(audio_.devices_, [&](const SimulatedDevice& other) { return other.id == device; });
    destroyed_.push_back("aggregate " + std::to_string(device));
    return true;
}

bool SimulatedTaps::sweep() {
    std::lock_guard guard(audio_.mutex_);
    return std::exchange(leftOver, false);
}

std::map<AudioObjectID, ProcessTapDescription> SimulatedTaps::taps() {
    std::lock_guard guard(audio_.mutex_);
    return taps_;
}

std::map<AudioObjectID, AggregateDeviceDescription> SimulatedTaps::aggregates() {
    std::lock_guard guard(audio_.mutex_);
    return aggregates_;
}

std::vector<std::string> SimulatedTaps::destroyed() {
    std::lock_guard guard(audio_.mutex_);
    return destroyed_;
}

std::vector<AudioObjectID> SimulatedTaps::processesOf(AudioObjectID device) {
    std::lock_guard guard(audio_.mutex_);
    std::vector<AudioObjectID> processes;
    const auto aggregate = aggregates_.find(device);
    if (aggregate == aggregates_.end())
        return processes;
    for (const auto& [tap, description] : taps_)
        if (carries(aggregate->second, tap))
            processes.insert(processes.end(), description.processes.begin(), description.processes.end());
    return processes;
}

bool SimulatedTaps::mutes(AudioObjectID process) {
    std::lock_guard guard(audio_.mutex_);
    return std::ranges::any_of(taps_, [&](const auto& entry) {
        const auto& [tap, description] = entry;
        return std::ranges::count(description.processes, process) > 0 &&
               (description.mute == TapMute::muted ||
                (description.mute == TapMute::mutedWhenTapped && isCaptured(tap)));
    });
}

bool SimulatedTaps::carries(const AggregateDeviceDescription& aggregate, AudioObjectID tap) const {
    return std::ranges::count(aggregate.taps, uidOf(tap)) > 0;
}

bool SimulatedTaps::isCaptured(AudioObjectID tap) const {
    return std::ranges::any_of(aggregates_, [&](const auto& aggregate) {
        return carries(aggregate.second, tap) &&
               std::ranges::any_of(audio_.units_, [&](const SimulatedUnit* unit) {
                   return unit->captures(aggregate.second.name);
               });
    });
}

} // namespace velto
