// One stream to or from one device of the sound server: set-up, the data path, and signs of life.
#pragma once

#include "VeltoPlatform/OutputUnits.h"

#include <pulse/context.h>
#include <pulse/stream.h>

#include <span>
#include <string>
#include <vector>

namespace velto {

/// What the owner of a stream gives it; outlives it.
struct PulseStreamCallbacks {
    InputCallback input = nullptr;
    RenderCallback render = nullptr;
    void* context = nullptr; ///< of the callback that is set
};

/// Everything happens on the sound thread or under its lock. The data path allocates nothing: playback is
/// rendered into the server's own memory; captured sound is gathered into periods of 10 ms, because the
/// server hands it over in pieces of a frame up to a period. What a device had stored before the stream
/// began is thrown away.
class PulseStream {
  public:
    enum class State { opening, running, ended };

    PulseStream(pa_context* context, AudioDirection direction, const std::string& device,
                const StreamFormat& format, const PulseStreamCallbacks& callbacks);
    ~PulseStream();
    PulseStream(const PulseStream&) = delete;
    PulseStream& operator=(const PulseStream&) = delete;

    static bool canCarry(const StreamFormat& format);
    static pa_sample_spec serverFormat(const StreamFormat& format);
    /// As `OutputUnit::render`, for a unit in `format` that has `ready` to hand over.
    static AudioStatus handOver(std::span<const std::int16_t> ready, const StreamFormat& format,
                                std::uint32_t frames, AudioBufferList buffers);

    State state() const;
    /// For how long it has been opening, or the server has neither delivered nor asked for anything. 0 while
    /// the device is suspended.
    pa_usec_t quietFor() const;
    /// Whether anything has moved since it was opened.
    bool moved() const { return moved_; }

    /// As `OutputUnit::render`: the period that is being handed over.
    AudioStatus pull(std::uint32_t frames, AudioBufferList buffers);

  private:
    void open(pa_context* context, AudioDirection direction, const std::string& device);
    void play(std::size_t bytes);
    void record();
    std::size_t staleFrames(std::size_t readable);
    void gather(const std::int16_t* samples, std::size_t count);

    StreamFormat format_;
    const PulseStreamCallbacks& callbacks_;
    pa_stream* stream_ = nullptr;
    std::vector<std::int16_t> period_;
    std::size_t gathered_ = 0; ///< samples of `period_` that are filled
    pa_usec_t movedAt_ = 0;
    pa_usec_t runningSince_ = 0;
    std::uint64_t takenFrames_ = 0; ///< in the first second
    bool moved_ = false;
};

} // namespace velto
