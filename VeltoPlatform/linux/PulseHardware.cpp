#include "VeltoPlatform/linux/PulseHardware.h"

#include "VeltoPlatform/linux/ProcessFiles.h"
#include "VeltoPlatform/linux/PulseCatalogue.h"
#include "VeltoPlatform/linux/PulsePlayers.h"
#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseTaps.h"

#include <pulse/introspect.h>

#include <algorithm>
#include <string>
#include <thread>

namespace velto {
namespace {

/// PipeWire's session manager chooses a few ms after the server has accepted the wish; on a busy machine it
/// takes more than 100.
constexpr std::chrono::milliseconds defaultLimit{500};
constexpr std::chrono::milliseconds defaultLook{1};

struct Defaults {
    std::string sink;
    std::string source;

    const std::string& of(AudioDirection direction) const {
        return direction == AudioDirection::input ? source : sink;
    }
};

/// Clients of the server and their recording streams, reduced to one process.
struct ProcessUse {
    pid_t pid = 0;
    std::vector<std::uint32_t> clients;
    struct Recording {
        std::uint32_t client = 0;
        bool ofProcess = false;
        bool corked = false;
    };
    std::vector<Recording> recordings;
};

bool belongsTo(pid_t pid, pa_proplist* properties) {
    return ProcessFiles::descends(processOf(properties), pid);
}

std::string text(const char* characters) {
    return characters == nullptr ? std::string() : std::string(characters);
}

std::optional<Defaults> readDefaults(PulseServer& server) {
    Defaults defaults;
    const bool answered = server.ask([&](pa_context* context) {
        return std::vector<pa_operation*>{pa_context_get_server_info(
            context,
            [](pa_context*, const pa_server_info* info, void* data) {
                if (info != nullptr)
                    *static_cast<Defaults*>(data) = {text(info->default_sink_name),
                                                     text(info->default_source_name)};
            },
            &defaults)};
    });
    if (!answered)
        return std::nullopt;
    return defaults;
}

std::optional<ProcessUse> use(PulseServer& server, pid_t pid) {
    ProcessUse use;
    use.pid = pid;
    const bool answered = server.ask([&](pa_context* context) {
        return std::vector<pa_operation*>{
            pa_context_get_client_info_list(
                context,
                [](pa_context*, const pa_client_info* client, int end, void* data) {
                    auto* found = static_cast<ProcessUse*>(data);
                    if (end == 0 && belongsTo(found->pid, client->proplist))
                        found->clients.push_back(client->index);
                },
                &use),
            pa_context_get_source_output_info_list(
                context,
                [](pa_context*, const pa_source_output_info* output, int end, void* data) {
                    auto* found = static_cast<ProcessUse*>(data);
                    if (end == 0)
                        found->recordings.push_back(
                            {output->client, belongsTo(found->pid, output->proplist), output->corked != 0});
                },
                &use)};
    });
    if (!answered)
        return std::nullopt;
    return use;
}

} // namespace

PulseHardware::PulseHardware(std::shared_ptr<PulseServer> server, std::shared_ptr<PulseTaps> taps)
    : server_(std::move(server)), taps_(std::move(taps)) {}

PulseHardware::~PulseHardware() {
    observeReturn({});
}

PulseHardware::Devices PulseHardware::read() {
    auto devices = PulseCatalogue::read(*server_);
    if (devices && taps_)
        std::ranges::move(taps_->devices(), std::back_inserter(*devices));
    std::lock_guard guard(mutex_);
    list_ = devices ? std::make_shared<const std::vector<PulseDevice>>(std::move(*devices)) : nullptr;
    listedAt_ = std::chrono::steady_clock::now();
    return list_;
}

std::optional<PulseDevice> PulseHardware::find(AudioObjectID id) {
    Devices devices;
    {
        std::lock_guard guard(mutex_);
        if (std::chrono::steady_clock::now() - listedAt_ < listAge)
            devices = list_;
    }
    if (!devices)
        devices = read();
    if (!devices)
        return std::nullopt;
    const auto found = std::ranges::find(*devices, id, &PulseDevice::id);
    if (found == devices->end())
        return std::nullopt;
    return *found;
}

std::optional<std::vector<AudioObjectID>> PulseHardware::devices() {
    const auto devices = read();
    if (!devices)
        return std::nullopt;
    std::vector<AudioObjectID> list;
    std::ranges::transform(*devices, std::back_inserter(list), &PulseDevice::id);
    return list;
}

std::optional<std::string> PulseHardware::deviceName(AudioObjectID id) {
    const auto device = find(id);
    if (!device || device->name().empty())
        return std::nullopt;
    return device->name();
}

std::optional<std::vector<std::uint32_t>> PulseHardware::streamConfiguration(AudioObjectID id,
                                                                             AudioDirection direction) {
    const auto device = find(id);
    if (!device)
        return std::nullopt;
    std::vector<std::uint32_t> streams;
    if (const auto channels = device->side(direction).channels; channels > 0)
        streams.push_back(channels);
    return streams;
}

std::optional<AudioObjectID> PulseHardware::defaultDevice(AudioDirection direction) {
    const auto defaults = readDefaults(*server_);
    const auto devices = defaults ? read() : nullptr;
    if (!devices)
        return std::nullopt;
    const auto found = std::ranges::find_if(*devices, [&](const PulseDevice& device) {
        return device.side(direction).channels > 0 &&
               device.side(direction).serverName == defaults->of(direction);
    });
    return found == devices->end() ? 0 : found->id;
}

bool PulseHardware::setDefaultDevice(AudioDirection direction, AudioObjectID id) {
    const auto device = find(id);
    if (!device || device->side(direction).channels == 0)
        return false;
    const auto& name = device->side(direction).serverName;
    bool accepted = false;
    const auto answer = [](pa_context*, int success, void* data) {
        *static_cast<bool*>(data) = success != 0;
    };
    const bool answered = server_->ask([&](pa_context* context) {
        return std::vector<pa_operation*>{
            direction == AudioDirection::input
                ? pa_context_set_default_source(context, name.c_str(), answer, &accepted)
                : pa_context_set_default_sink(context, name.c_str(), answer, &accepted)};
    });
    if (!answered || !accepted)
        return false;
    const auto until = std::chrono::steady_clock::now() + defaultLimit;
    for (;;) {
        const auto defaults = readDefaults(*server_);
        const bool inForce = defaults && defaults->of(direction) == name;
        if (inForce || !defaults || std::chrono::steady_clock::now() > until)
            return inForce;
        std::this_thread::sleep_for(defaultLook);
    }
}

std::optional<AudioObjectID> PulseHardware::processObject(pid_t pid) {
    return pid > 0 && ProcessFiles::exists(pid) ? static_cast<AudioObjectID>(pid) : 0;
}

std::optional<bool> PulseHardware::processIsRunningInput(AudioObjectID process) {
    const auto found = use(*server_, static_cast<pid_t>(process));
    if (!found)
        return std::nullopt;
    return std::ranges::any_of(found->recordings, [&](const ProcessUse::Recording& recording) {
        return !recording.corked &&
               (recording.ofProcess || std::ranges::count(found->clients, recording.client) > 0);
    });
}

void PulseHardware::observeReturn(std::function<void()> returned) {
    server_->observeReturn(std::move(returned));
}

} // namespace velto
