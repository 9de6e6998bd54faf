#include "VeltoApp/views/models/AudioModel.h"

#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioRouting.h"

namespace velto {
namespace {

asio::awaitable<void> makeDefault(std::string input, std::string output) {
    if (const auto device = AudioDevices::find(input); device && !input.empty())
        AudioRouting::setDefaultInput(device->id);
    if (const auto device = AudioDevices::find(output); device && !output.empty())
        AudioRouting::setDefaultOutput(device->id);
    co_return;
}

asio::awaitable<void> makeDefaultAndLook(std::weak_ptr<AudioState> weak, std::string input,
                                         std::string output) {
    co_await Blocking::run(makeDefault(std::move(input), std::move(output)));
    if (const auto audio = weak.lock())
        audio->refresh();
}

} // namespace

AudioModel::AudioModel(std::shared_ptr<AudioState> audio, QObject* parent)
    : QObject(parent), audio_(std::move(audio)), status_(audio_->status, [this] { statusChanged(); }),
      bridgeInstalled_(audio_->bridgeInstalled, [this] { bridgeInstalledChanged(); }),
      inputDevices_(audio_->inputDevices, [this] { inputDevicesChanged(); }),
      outputDevices_(audio_->outputDevices, [this] { outputDevicesChanged(); }),
      currentInput_(audio_->currentInput, [this] { currentInputChanged(); }),
      currentOutput_(audio_->currentOutput, [this] { currentOutputChanged(); }) {}

QStringList AudioModel::monitorDevices() const {
    QStringList devices;
    for (const auto& name : outputDevices_())
        if (!name.starts_with("Velto"))
            devices.append(shown(name));
    return devices;
}

void AudioModel::refresh() {
    audio_->refresh();
}

void AudioModel::chooseInput(const QString& name) {
    choose(name.toStdString(), "");
}

void AudioModel::chooseOutput(const QString& name) {
    choose("", name.toStdString());
}

void AudioModel::setBridgeDefaults() {
    choose(std::string(AudioState::wantInput), std::string(AudioState::wantOutput));
}

void AudioModel::choose(std::string input, std::string output) {
    MainThread::spawn(makeDefaultAndLook(audio_, std::move(input), std::move(output)));
}

} // namespace velto
