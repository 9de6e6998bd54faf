// Records one input device to one WAV file.
#pragma once

#include "VeltoShared/audio/AudioCapture.h"
#include "VeltoShared/core/Clock.h"

#include <filesystem>
#include <memory>
#include <string>

namespace velto {

/// Mono, 16-bit. Started and stopped once, on the main thread. The real-time thread only puts samples into a
/// queue; the file is written on `Blocking` ten times a second, for a disk that stalls must not hold up the
/// sound of a call, and its header follows twice a second, so that a killed application leaves all but the
/// last second behind. Without `stop`, what is in the file stays as it is.
class WavRecorder {
  public:
    /// The file is made or emptied, with an empty header. None when the device is missing; the file with its
    /// empty header stays behind. `rate` in Hz. A file that cannot be made records nothing, see `trouble`.
    static std::unique_ptr<WavRecorder> open(const std::string& deviceName, double rate,
                                             const std::filesystem::path& url);
    ~WavRecorder();
    WavRecorder(const WavRecorder&) = delete;
    WavRecorder& operator=(const WavRecorder&) = delete;

    void start();
    /// No sample is written after this; the file is whole, and forced to storage on `Blocking`.
    void stop();

    const std::filesystem::path& url() const { return url_; }
    /// After `stop`: how many samples are missing in the file, and why; empty when none is.
    std::string trouble() const;

  private:
    struct Recording;

    WavRecorder(std::shared_ptr<Recording> recording, std::filesystem::path url);

    std::shared_ptr<Recording> recording_;
    std::filesystem::path url_;
    std::unique_ptr<AudioCapture> capture_;
    std::unique_ptr<Timer> timer_;
};

} // namespace velto
