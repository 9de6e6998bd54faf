// Records mono samples from one named input device.
#pragma once

#include "VeltoShared/audio/CaptureBox.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace velto {

/// Opened, started once, stopped; not started again after that. Used on one thread; `onFrames` is called on
/// the platform's real-time thread, must not block, and is not called any more once `stop` has returned.
class AudioCapture {
  public:
    /// None when no device has exactly this name, or the platform has no unit or cannot make one.
    /// `sampleRate` in Hz; `channels` are asked of the device and averaged into one (0 counts as 1).
    static std::unique_ptr<AudioCapture> open(const std::string& deviceName, double sampleRate,
                                              std::uint32_t channels,
                                              std::function<void(std::span<const std::int16_t>)> onFrames);
    ~AudioCapture();
    AudioCapture(const AudioCapture&) = delete;
    AudioCapture& operator=(const AudioCapture&) = delete;

    void start();
    /// Safe to call again.
    void stop();

  private:
    AudioCapture() = default;

    CaptureBox box_;
    std::unique_ptr<OutputUnit> unit_;
};

} // namespace velto
