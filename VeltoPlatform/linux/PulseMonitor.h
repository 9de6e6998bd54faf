// What one stream on the sound server plays, kept for a moment so that it can be mixed with others.
#pragma once

#include "VeltoPlatform/OutputUnits.h"
#include "VeltoPlatform/linux/JitterBuffer.h"
#include "VeltoPlatform/linux/PulsePlayers.h"
#include "VeltoPlatform/linux/PulseServer.h"

#include <pulse/context.h>
#include <pulse/stream.h>

#include <cstdint>
#include <span>

namespace velto {

/// Everything happens on the sound thread or under its lock. The data path allocates nothing. It has a
/// connection of its own: where a player ends while its monitor is being made, pipewire-pulse names no source
/// in its answer, and libpulse gives up the connection with all that is on it.
class PulseMonitor {
  public:
    enum class State { running, lost, refused };

    PulseMonitor(const PulseServer& server, const PulsePlayer& player, const StreamFormat& format);
    ~PulseMonitor();
    PulseMonitor(const PulseMonitor&) = delete;
    PulseMonitor& operator=(const PulseMonitor&) = delete;

    /// `lost`: the player ended, or was moved to another sink; it may be tried again.
    State state() const;
    /// When it was made, on libpulse's clock.
    pa_usec_t madeAt() const { return madeAt_; }
    std::uint32_t sink() const { return sink_; }

    /// Takes samples from the front and adds them to `sum`; adds nothing where there are none.
    void addTo(std::span<std::int32_t> sum);

  private:
    void listen();
    void record();

    std::uint32_t player_;
    std::uint32_t sink_;
    StreamFormat format_;
    pa_usec_t madeAt_;
    JitterBuffer buffer_;
    pa_context* context_;
    pa_stream* stream_ = nullptr;
};

} // namespace velto
