// What another application plays, as an input device of this process alone.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <memory>
#include <string>
#include <string_view>

namespace velto {

/// A process tap and the private aggregate device that carries its sound. Sound flows while an `AudioCapture`
/// runs on `deviceName`; the tap itself needs no start. Used on one thread; never armed again once destroyed.
/// Devices are found by name: destroy one tap before capturing from the next of the same name.
class ProcessTap {
  public:
    /// Taps the first running application with exactly this identifier. `name` becomes the device's name.
    /// With `muteOriginal` the application is silent on this computer while the tap is captured. None when
    /// the application is not running, has nothing to do with sound, or the system refuses tap or device;
    /// nothing is left behind then.
    static std::unique_ptr<ProcessTap> create(std::string_view bundleID, const std::string& name,
                                              bool muteOriginal);
    ~ProcessTap();
    ProcessTap(const ProcessTap&) = delete;
    ProcessTap& operator=(const ProcessTap&) = delete;

    /// Safe to call again. What the system refuses is ignored.
    void destroy();

    /// Of the aggregate device.
    AudioObjectID deviceID() const { return deviceID_; }
    const std::string& deviceName() const { return deviceName_; }

  private:
    ProcessTap(AudioObjectID tap, AudioObjectID aggregate, std::string name);

    AudioObjectID deviceID_;
    std::string deviceName_;
    AudioObjectID tapID_;       ///< 0 when none
    AudioObjectID aggregateID_; ///< 0 when none
    bool created_ = true;       ///< both exist
};

} // namespace velto
