// The sound of a computer in memory: devices, defaults, processes, output units, and faults to switch on.
#pragma once

#include "VeltoPlatform/AudioHardware.h"
#include "VeltoPlatform/OutputUnits.h"
#include "VeltoPlatform/simulated/SimulatedTaps.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

class SimulatedUnit;

struct SimulatedDevice {
    AudioObjectID id = 0;
    std::string name;
    std::vector<std::uint32_t> inputStreams; ///< channels of each
    std::vector<std::uint32_t> outputStreams;
};

/// What a test may break; each is a set of the objects concerned, or a flag.
struct SimulatedAudioFaults {
    bool deviceListFails = false;
    std::set<AudioObjectID> nameFails;
    std::set<AudioObjectID> configurationFails;
    bool defaultReadFails = false;
    std::set<AudioObjectID> refusedAsDefault;
    bool processReadFails = false;
    bool noUnitComponent = false;
    bool instantiationFails = false;
    AudioStatus renderStatus = kAudioNoError; ///< what capture units answer to `render`
    bool renderWithoutData = false;           ///< `render` succeeds, but takes the buffer away
    bool silentUnits = false;                 ///< units never call back, as after a failed set-up
};

/// Deterministic: nothing moves unless a test moves it. All operations: any thread; callbacks run inside the
/// operation that causes them, and a unit's `stop` waits for them. Outlives its units.
class SimulatedAudio final : public AudioHardware, public OutputUnits {
  public:
    SimulatedAudioFaults faults;
    SimulatedTaps taps{*this};

    /// A device with one stream a side (0 channels: no such side). Answers its identifier, counted from 1.
    AudioObjectID addDevice(const std::string& name, std::uint32_t inputChannels,
                            std::uint32_t outputChannels);
    AudioObjectID addDevice(SimulatedDevice device);
    /// The device vanishes; units on it fall silent until a device of that name is added again.
    void removeDevice(std::string_view name);
    /// Speaker and Microphone (the defaults), the feed and its mic, and the loop; connected as the virtual
    /// devices are.
    void addUsualDevices();
    /// What is played on `output` is recorded from `input` while time advances.
    void connect(const std::string& output, const std::string& input);
    void setProcess(pid_t pid, AudioObjectID object, bool runningInput);
    /// Queues 48 kHz mono samples that a process plays to the default output during the next advances.
    void play(AudioObjectID process, std::span<const std::int16_t> samples);
    /// The sound server was lost and is back: tells the observer. Defaults stay as the test has set them.
    void serverReturns();

    /// Hands interleaved samples to every running capture of the device, in its own format; answers the last
    /// callback's status, or `kAudioUnready` when nobody captures.
    AudioStatus deliver(std::string_view device, std::span<const std::int16_t> interleaved);
    /// Asks every running playback of the device for frames and answers their sum, interleaved in the format
    /// of the first.
    std::vector<std::int16_t> pull(std::string_view device, std::uint32_t frames);
    /// Lets the devices run, 10 ms at a time: playbacks are pulled, and captures get what the connected
    /// outputs play, or what `speak` has queued, or silence. Units' rates must be multiples of 100 Hz.
    void advance(std::chrono::milliseconds duration);
    /// Queues 48 kHz mono samples at a device's input for the next advances.
    void speak(const std::string& input, std::span<const std::int16_t> samples);
    /// 48 kHz mono samples that a device has played during advances; taken away.
    std::vector<std::int16_t> takeHeard(const std::string& output);

    /// What was asked of units, in order, such as "enableIO output 0 off" or "setCurrentDevice 3".
    std::vector<std::string> unitCalls();
    /// Defaults that were set successfully, in order, such as "input 2".
    std::vector<std::string> defaultChanges();
    std::size_t runningUnits();

    std::optional<std::vector<AudioObjectID>> devices() override;
    std::optional<std::string> deviceName(AudioObjectID device) override;
    std::optional<std::vector<std::uint32_t>> streamConfiguration(AudioObjectID device,
                                                                  AudioDirection direction) override;
    std::optional<AudioObjectID> defaultDevice(AudioDirection direction) override;
    bool setDefaultDevice(AudioDirection direction, AudioObjectID device) override;
    std::optional<AudioObjectID> processObject(pid_t pid) override;
    std::optional<bool> processIsRunningInput(AudioObjectID process) override;
    void observeReturn(std::function<void()> returned) override;

    bool available() override;
    std::unique_ptr<OutputUnit> instantiate() override;

  private:
    friend class SimulatedTaps;
    friend class SimulatedUnit;

    const SimulatedDevice* device(AudioObjectID id) const;
    const SimulatedDevice* device(std::string_view name) const;
    void step();
    /// What each process plays in one step; what is not muted is added to `played`.
    std::map<AudioObjectID, std::vector<int>> stepProcesses(std::map<std::string, std::vector<int>>& played);

    std::recursive_mutex mutex_;
    std::vector<SimulatedDevice> devices_;
    AudioObjectID nextID_ = 1;
    std::map<AudioDirection, AudioObjectID> defaults_;
    std::map<pid_t, std::pair<AudioObjectID, bool>> processes_;
    std::vector<std::pair<std::string, std::string>> connections_;
    std::map<std::string, std::vector<std::int16_t>> spoken_;
    std::map<AudioObjectID, std::vector<std::int16_t>> processSounds_;
    std::map<std::string, std::vector<std::int16_t>> heard_;
    std::function<void()> returned_;
    std::vector<SimulatedUnit*> units_;
    std::vector<std::string> unitCalls_;
    std::vector<std::string> defaultChanges_;
};

} // namespace velto
