#include "VeltoApp/state/AudioState.h"

#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioRouting.h"

namespace velto {
namespace {

struct Sound {
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;
    std::string defaultInput;
    std::string defaultOutput;
    bool hasBridge = false;
};

asio::awaitable<Sound> listen() {
    Sound sound;
    for (const auto& device : AudioDevices::all()) {
        if (device.inputChannels >= 1)
            sound.inputs.push_back(device.name);
        if (device.outputChannels >= 1)
            sound.outputs.push_back(device.name);
    }
    sound.defaultInput = AudioRouting::defaultInputName();
    sound.defaultOutput = AudioRouting::defaultOutputName();
    sound.hasBridge = AudioBridge::installed();
    co_return sound;
}

} // namespace

void AudioState::refresh() {
    MainThread::spawn(look(weak_from_this(), ++lastLook_));
}

asio::awaitable<void> AudioState::look(std::weak_ptr<AudioState> weak, std::uint64_t number) {
    auto sound = co_await Blocking::run(listen());
    const auto self = weak.lock();
    if (!self || self->lastLook_ != number)
        co_return;
    self->inputDevices.set(std::move(sound.inputs));
    self->outputDevices.set(std::move(sound.outputs));
    self->currentInput.set(std::move(sound.defaultInput));
    self->currentOutput.set(std::move(sound.defaultOutput));
    self->bridgeInstalled.set(sound.hasBridge);
    self->status.set(sound.hasBridge ? "Bridge ready (routed only while a call is active)"
                                     : "Bridge devices not installed — Settings → Debug → Drivers");
}

} // namespace velto
