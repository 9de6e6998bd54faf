// The operating system's audio input/output unit: one stream to or from one device, with a converter.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <cstdint>
#include <memory>
#include <span>

namespace velto {

/// 0 is success everywhere in the units, as in the callbacks.
using AudioStatus = std::int32_t;
inline constexpr AudioStatus kAudioNoError = 0;
/// What a callback answers when it has nothing to work on.
inline constexpr AudioStatus kAudioUnready = -1;
/// The caller's buffer cannot hold the frames that were asked for; nothing was delivered.
inline constexpr AudioStatus kAudioTooManyFrames = -10874;

/// Signed 16-bit, native byte order, packed and interleaved linear PCM.
struct StreamFormat {
    double sampleRate = 0; ///< Hz
    std::uint32_t channels = 0;

    std::uint32_t bytesPerFrame() const { return channels * 2; }
    bool operator==(const StreamFormat&) const = default;
};

/// One buffer of interleaved samples. `data` may be none; `byteSize` is its size in bytes.
struct AudioBuffer {
    std::uint32_t channels = 0;
    std::uint32_t byteSize = 0;
    std::int16_t* data = nullptr;
};

using AudioBufferList = std::span<AudioBuffer>;

enum class UnitScope { global, input, output };

/// What the platform hands an input callback and expects back in `render`.
struct RenderContext {
    std::uint32_t flags = 0;
    std::uint64_t timeStamp = 0; ///< ns, monotonic
    std::uint32_t bus = 0;
};

/// Called on the platform's real-time thread when `frames` captured frames can be pulled with `render`.
using InputCallback = AudioStatus (*)(void* context, const RenderContext& render, std::uint32_t frames);
/// Called on the platform's real-time thread to fill every buffer of the list with `frames` frames.
using RenderCallback = AudioStatus (*)(void* context, std::uint32_t frames, AudioBufferList buffers);

/// One unit. Set up and torn down on one thread; element 1 is the input side, element 0 the output side.
/// Order of use: properties, `initialize`, `start`, `stop`, `uninitialize`, destruction (which disposes).
/// A unit whose device or server is lost comes back by itself when they return.
class OutputUnit {
  public:
    virtual ~OutputUnit() = default;

    virtual AudioStatus enableIO(UnitScope scope, std::uint32_t element, bool on) = 0;
    virtual AudioStatus setCurrentDevice(AudioObjectID device) = 0;
    virtual AudioStatus setStreamFormat(UnitScope scope, std::uint32_t element,
                                        const StreamFormat& format) = 0;
    virtual AudioStatus setInputCallback(InputCallback callback, void* context) = 0;
    virtual AudioStatus setRenderCallback(RenderCallback callback, void* context) = 0;
    virtual AudioStatus initialize() = 0;
    virtual AudioStatus start() = 0;
    /// No callback is under way or will come once this has returned.
    virtual AudioStatus stop() = 0;
    virtual AudioStatus uninitialize() = 0;

    /// Pulls captured frames, from within the input callback only. `kAudioTooManyFrames` when the first
    /// buffer is smaller than the frames; otherwise sets each buffer's `byteSize` to what was written.
    virtual AudioStatus render(const RenderContext& render, std::uint32_t frames,
                               AudioBufferList buffers) = 0;
};

class OutputUnits {
  public:
    virtual ~OutputUnits() = default;

    /// Whether the platform has such a unit at all.
    virtual bool available() = 0;
    /// None when it cannot be instantiated.
    virtual std::unique_ptr<OutputUnit> instantiate() = 0;
};

} // namespace velto
