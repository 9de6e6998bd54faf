// What the capture callback works on: the prepared buffers and the receiver of mono samples.
#pragma once

#include "VeltoPlatform/OutputUnits.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace velto {

/// Set up on the owner's thread before the unit starts, then touched by the real-time thread only.
class CaptureBox {
  public:
    static constexpr std::uint32_t capacityFrames = 8192;

    /// Allocates everything that a callback needs.
    void prepare(std::uint32_t channelCount);
    /// The unit's input callback; `context` is the box. Answers `kAudioUnready` without a unit or a prepared
    /// buffer, `kAudioTooManyFrames` for more than `capacityFrames`, and a failing render's own status; in
    /// each of these nothing is delivered. Otherwise delivers one sample a frame: the sum of its channels
    /// divided by their number, truncated toward zero. Allocates nothing.
    static AudioStatus captured(void* context, const RenderContext& render, std::uint32_t frames);

    std::function<void(std::span<const std::int16_t>)> onFrames;
    OutputUnit* unit = nullptr;
    std::optional<AudioBuffer> abl;
    std::uint32_t channels = 2;

  private:
    AudioStatus deliver(const RenderContext& render, std::uint32_t frames, AudioBuffer& buffer);
    void mixDown(const std::int16_t* interleaved, std::uint32_t frames);

    std::vector<std::int16_t> interleaved_;
    std::vector<std::int16_t> mono_;
};

} // namespace velto
