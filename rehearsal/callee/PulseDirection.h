// One stream to or from whatever is the system's default device, over a connection of its own.
#pragma once

#include <pulse/pulseaudio.h>

#include <cstdint>
#include <functional>
#include <span>

namespace velto::rehearsal {

/// Signed 16-bit mono. The stream names no device and may be moved, so it follows the default; when the
/// server goes away it is made again every 100 ms until it stands. Constructed and destroyed with the
/// mainloop's lock held; the callbacks come on the mainloop's thread with the lock held.
class PulseDirection {
  public:
    struct Callbacks {
        /// Recording: samples that arrived. Their last one sounded `latency` microseconds ago.
        std::function<void(std::span<const std::int16_t> samples, std::int64_t latency)> arrived;
        /// Playing: fill the samples, which will sound from `latency` microseconds on.
        std::function<void(std::span<std::int16_t> samples, std::int64_t latency)> wanted;
    };

    /// `rate` in Hz; `bufferMilliseconds` is the fragment to record or the queue to keep when playing. With
    /// `arrived` set the stream records, else it plays.
    PulseDirection(pa_threaded_mainloop* mainloop, std::uint32_t rate, std::uint32_t bufferMilliseconds,
                   Callbacks callbacks);
    ~PulseDirection();
    PulseDirection(const PulseDirection&) = delete;
    PulseDirection& operator=(const PulseDirection&) = delete;

  private:
    void connect();
    void disconnect();
    void retryLater();
    void contextChanged();
    void openStream();
    void read();
    void write(std::size_t bytes);
    std::int64_t latency() const;

    pa_threaded_mainloop* mainloop_;
    std::uint32_t rate_;
    std::uint32_t bufferBytes_;
    Callbacks callbacks_;
    pa_context* context_ = nullptr;
    pa_stream* stream_ = nullptr;
    pa_time_event* retry_ = nullptr;
};

} // namespace velto::rehearsal
