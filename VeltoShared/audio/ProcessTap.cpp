#include "VeltoShared/audio/ProcessTap.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/ProcessTaps.h"
#include "VeltoShared/audio/AudioProcess.h"
#include "VeltoShared/core/UUID.h"

#include <utility>

namespace velto {
namespace {

/// 0 when it cannot be created.
AudioObjectID createTap(AudioObjectID process, const std::string& name, bool muteOriginal) {
    ProcessTapDescription description;
    description.name = name;
    description.processes = {process};
    description.isPrivate = true;
    description.mixdown = true;
    description.mute = muteOriginal ? TapMute::mutedWhenTapped : TapMute::unmuted;
    return platform().processTaps->createProcessTap(description).value_or(0);
}

/// 0 when it cannot be created.
AudioObjectID createAggregate(AudioObjectID tap, const std::string& name) {
    const auto tapUID = platform().processTaps->tapUID(tap);
    if (!tapUID)
        return 0;
    AggregateDeviceDescription description;
    description.name = name;
    description.uid = "velto.tap." + UUID::random().text();
    description.isPrivate = true;
    description.taps = {*tapUID};
    return platform().processTaps->createAggregateDevice(description).value_or(0);
}

} // namespace

std::unique_ptr<ProcessTap> ProcessTap::create(std::string_view bundleID, const std::string& name,
                                               bool muteOriginal) {
    const auto process = AudioProcess::objectID(bundleID);
    if (!process)
        return nullptr;
    const auto tap = createTap(*process, name, muteOriginal);
    if (tap == 0)
        return nullptr;
    const auto aggregate = createAggregate(tap, name);
    if (aggregate == 0) {
        platform().processTaps->destroyProcessTap(tap);
        return nullptr;
    }
    return std::unique_ptr<ProcessTap>(new ProcessTap(tap, aggregate, name));
}

ProcessTap::ProcessTap(AudioObjectID tap, AudioObjectID aggregate, std::string name)
    : deviceID_(aggregate), deviceName_(std::move(name)), tapID_(tap), aggregateID_(aggregate) {}

ProcessTap::~ProcessTap() {
    destroy();
}

void ProcessTap::destroy() {
    if (!std::exchange(created_, false))
        return;
    // The aggregate first, because it refers to the tap.
    if (const auto aggregate = std::exchange(aggregateID_, 0); aggregate != 0)
        platform().processTaps->destroyAggregateDevice(aggregate);
    if (const auto tap = std::exchange(tapID_, 0); tap != 0)
        platform().processTaps->destroyProcessTap(tap);
}

} // namespace velto
