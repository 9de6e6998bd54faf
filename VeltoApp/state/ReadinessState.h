// Whether the application can place calls: Accessibility, microphone, audio driver.
#pragma once

#include "VeltoPlatform/TroubleReport.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/Published.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velto {

/// Held by `std::shared_ptr`; main thread only.
class ReadinessState : public ObservableObject, public std::enable_shared_from_this<ReadinessState> {
  public:
    /// The names of the drivers in the plug-in folder.
    using InstalledOnDisk = std::function<std::vector<std::string>()>;

    explicit ReadinessState(InstalledOnDisk installedOnDisk);
    static const std::shared_ptr<ReadinessState>& shared();

    Published<bool> axReady{*this, false};  ///< other applications can be read and pressed
    Published<bool> micReady{*this, false}; ///< recording is allowed
    /// Drivers whose names begin with "VeltoLoop" and "VeltoVoice" are installed.
    Published<bool> driverReady{*this, false};
    bool didPromptAX = false;

    bool ready() const { return axReady() && micReady() && driverReady(); }
    /// Looks again; signals only what is other than before, since whoever asks makes it look. The log is told
    /// why something is missing, once until the reason changes. Waits for a desktop or a sound server that is
    /// silent for some tenths of a second, once.
    void refresh();
    /// Asks for the microphone and looks again when there is an answer.
    void requestMic();

  private:
    void lookForDriver();
    static asio::awaitable<void> reportDevices(std::weak_ptr<ReadinessState> weak, std::uint64_t number);

    InstalledOnDisk installedOnDisk_;
    std::uint64_t lastLook_ = 0;
    TroubleReport accessibility_;
    TroubleReport microphone_;
    TroubleReport driver_;
};

} // namespace velto
