// What the windows show of the sound: devices, default devices, whether the virtual devices exist.
#pragma once

#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/Published.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

/// Held by `std::shared_ptr`; main thread only. The sound server is asked off it.
class AudioState : public ObservableObject, public std::enable_shared_from_this<AudioState> {
  public:
    static constexpr std::string_view wantInput = AudioBridge::inputDevice;
    static constexpr std::string_view wantOutput = AudioBridge::outputDevice;
    static constexpr std::string_view agentMic = AudioBridge::agentMic;
    static constexpr std::string_view agentFeed = AudioBridge::agentFeed;

    Published<std::vector<std::string>> inputDevices{*this};  ///< in the catalogue's order
    Published<std::vector<std::string>> outputDevices{*this}; ///< a device with both sides is in both
    Published<std::string> currentInput{*this};               ///< the default device; empty: none
    Published<std::string> currentOutput{*this};
    Published<std::string> status{*this}; ///< one line about the bridge
    Published<bool> bridgeInstalled{*this, false};

    /// Looks again, and publishes in one step, soon after, what was there. Of looks that overlap only the
    /// last one publishes.
    void refresh();

  private:
    static asio::awaitable<void> look(std::weak_ptr<AudioState> weak, std::uint64_t number);

    std::uint64_t lastLook_ = 0;
};

} // namespace velto
