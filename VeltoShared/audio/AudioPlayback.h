// Plays queued mono samples on one named output device.
#pragma once

#include "VeltoShared/audio/PlaybackBox.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace velto {

/// Opened, started once, stopped; not started again after that. `write`, `flush` and `stats`: any thread;
/// the rest on one thread.
class AudioPlayback {
  public:
    struct Stats {
        std::int64_t rendered = 0;  ///< frames that the device asked for
        std::int64_t underruns = 0; ///< of these, frames of silence because nothing was queued; idle counts
    };

    /// None when no device has exactly this name, or the platform has no unit or cannot make one.
    /// `sampleRate` in Hz; each sample goes to all `channels` (0 counts as 1).
    static std::unique_ptr<AudioPlayback> open(const std::string& deviceName, double sampleRate,
                                               std::uint32_t channels);
    ~AudioPlayback();
    AudioPlayback(const AudioPlayback&) = delete;
    AudioPlayback& operator=(const AudioPlayback&) = delete;

    void start();
    /// Safe to call again.
    void stop();

    /// Queues samples behind those that wait; there is no upper bound.
    void write(std::span<const std::int16_t> samples);
    /// Drops everything that has not been handed to the device.
    void flush();
    Stats stats() const;

  private:
    explicit AudioPlayback(std::uint32_t channels) : box_(channels) {}

    mutable PlaybackBox box_;
    std::unique_ptr<OutputUnit> unit_;
};

} // namespace velto
