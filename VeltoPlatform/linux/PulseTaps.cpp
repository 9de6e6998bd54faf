#include "VeltoPlatform/linux/PulseTaps.h"

#include "VeltoPlatform/linux/ProcessFiles.h"
#include "VeltoPlatform/linux/PulseTapSink.h"
#include "VeltoPlatform/linux/PulseTapSweep.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace velto {
namespace {

/// Taps and their devices are counted from here: below the devices of the server, above all processes.
constexpr AudioObjectID firstID = 0x40000000U;
constexpr std::uint32_t channels = 2;

bool canServe(const ProcessTapDescription& description) {
    return description.processes.size() == 1 && !description.exclusive && description.isPrivate &&
           !description.mono && description.mixdown && description.mute != TapMute::muted &&
           ProcessFiles::exists(static_cast<pid_t>(description.processes.front()));
}

} // namespace

PulseTaps::PulseTaps(std::shared_ptr<PulseServer> server) : server_(std::move(server)), lastID_(firstID) {}

PulseTaps::~PulseTaps() {
    while (!taps_.empty())
        destroyProcessTap(taps_.begin()->first);
}

std::optional<AudioObjectID> PulseTaps::createProcessTap(const ProcessTapDescription& description) {
    if (!canServe(description))
        return std::nullopt;
    const auto id = newID();
    const auto tap = std::make_shared<PulseTap>("tap " + std::to_string(id),
                                                static_cast<pid_t>(description.processes.front()));
    if (!(description.mute == TapMute::unmuted ? serverIsThere() : mute(*tap)))
        return std::nullopt;
    PulseServer::Lock lock(*server_);
    taps_[id] = tap;
    if (!players_)
        players_ = std::make_unique<PulsePlayers>(*server_, [this] {
            for (const auto& each : std::views::values(taps_))
                each->update(players_->list());
        });
    tap->update(players_->list());
    return id;
}

AudioObjectID PulseTaps::newID() {
    PulseServer::Lock lock(*server_);
    return ++lastID_;
}

bool PulseTaps::serverIsThere() {
    return server_->ask([](pa_context* context) {
        return std::vector<pa_operation*>{pa_context_get_server_info(
            context, [](pa_context*, const pa_server_info*, void*) {}, nullptr)};
    });
}

bool PulseTaps::mute(PulseTap& tap) {
    if (mutesOne())
        return false;
    sweepTapSinks(*server_, false);
    auto sink = PulseTapSink::load(*server_, [&tap] { tap.refresh(); });
    if (!sink)
        return false;
    PulseServer::Lock lock(*server_);
    tap.muteWith(std::move(sink));
    return true;
}

bool PulseTaps::mutesOne() {
    PulseServer::Lock lock(*server_);
    return std::ranges::any_of(taps_, [](const auto& tap) { return tap.second->mutes(); });
}

bool PulseTaps::destroyProcessTap(AudioObjectID id) {
    std::shared_ptr<PulseTap> tap;
    {
        PulseServer::Lock lock(*server_);
        const auto found = taps_.find(id);
        if (found == taps_.end())
            return false;
        tap = found->second;
        for (const auto& device : std::views::values(devices_))
            if (device->tap == tap)
                device->tap.reset();
        taps_.erase(found);
        if (taps_.empty())
            players_.reset();
    }
    tap->end(*server_);
    return true;
}

std::optional<std::string> PulseTaps::tapUID(AudioObjectID id) {
    PulseServer::Lock lock(*server_);
    const auto found = taps_.find(id);
    if (found == taps_.end())
        return std::nullopt;
    return found->second->uid();
}

std::optional<AudioObjectID> PulseTaps::createAggregateDevice(const AggregateDeviceDescription& description) {
    PulseServer::Lock lock(*server_);
    const auto tap = std::ranges::find_if(
        taps_, [&](const auto& entry) { return description.taps == std::vector{entry.second->uid()}; });
    const bool taken = std::ranges::any_of(
        devices_, [&](const auto& entry) { return entry.second->description.uid == description.uid; });
    if (tap == taps_.end() || taken || !description.isPrivate || description.stacked)
        return std::nullopt;
    const auto id = newID();
    devices_[id] = std::make_shared<PulseTapDevice>(PulseTapDevice{id, description, tap->second});
    return id;
}

bool PulseTaps::destroyAggregateDevice(AudioObjectID id) {
    PulseServer::Lock lock(*server_);
    const auto found = devices_.find(id);
    if (found == devices_.end())
        return false;
    found->second->tap.reset();
    devices_.erase(found);
    return true;
}

bool PulseTaps::sweep() {
    return sweepTapSinks(*server_, mutesOne());
}

std::vector<PulseDevice> PulseTaps::devices() {
    PulseServer::Lock lock(*server_);
    std::vector<PulseDevice> list;
    list.reserve(devices_.size());
    for (const auto& [id, device] : devices_)
        list.push_back({id, {}, {device->description.uid, device->description.name, channels}});
    return list;
}

std::shared_ptr<const PulseTapDevice> PulseTaps::device(AudioObjectID id) {
    PulseServer::Lock lock(*server_);
    const auto found = devices_.find(id);
    return found == devices_.end() ? nullptr : found->second;
}

} // namespace velto
