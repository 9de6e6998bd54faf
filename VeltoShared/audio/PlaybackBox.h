// What the render callback works on: the queue of mono samples and its counters.
#pragma once

#include "VeltoPlatform/OutputUnits.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace velto {

/// Every field from `ring` on is guarded by `lock`, which is held for one copy only.
class PlaybackBox {
  public:
    static constexpr std::size_t reservedSamples = 96'000;  ///< 4 s at 24 kHz
    static constexpr std::size_t compactionSamples = 16384; ///< consumed samples that are kept at most

    explicit PlaybackBox(std::uint32_t channelCount);

    /// The unit's render callback; `context` is the box. Gives every queued sample to all channels of one
    /// frame, silence when there are none; `kAudioUnready` without a buffer list. Allocates nothing.
    static AudioStatus rendered(void* context, std::uint32_t frames, AudioBufferList buffers);

    OutputUnit* unit = nullptr;
    std::uint32_t channels = 0; ///< of the requested format

    std::mutex lock;
    /// Queued samples from `head` on; what lies before it has been played. Without upper bound.
    std::vector<std::int16_t> ring;
    std::size_t head = 0;
    std::int64_t renderedFrames = 0; ///< asked for by the device
    std::int64_t underrunFrames = 0; ///< of these, played as silence because nothing was queued

  private:
    void fill(std::uint32_t frames, const AudioBuffer& buffer);
};

} // namespace velto
