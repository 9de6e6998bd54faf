// What a unit on the device of a tap captures: the sum of all that the tapped process plays.
#pragma once

#include "VeltoPlatform/linux/PulseMonitor.h"
#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseStream.h"
#include "VeltoPlatform/linux/PulseTap.h"

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace velto {

/// Hands on periods of 10 ms, silence included, as long as the server is there and the device exists. Made,
/// ended and called under the server's lock or on the sound thread; the data path allocates nothing.
class PulseMix final : private PulseListener, private PulseTap::Reader {
  public:
    /// `callbacks` outlive it.
    PulseMix(PulseServer& server, std::shared_ptr<const PulseTapDevice> device, const StreamFormat& format,
             const PulseStreamCallbacks& callbacks);
    ~PulseMix() override;
    PulseMix(const PulseMix&) = delete;
    PulseMix& operator=(const PulseMix&) = delete;

    /// As `OutputUnit::render`: the period that is being handed over.
    AudioStatus pull(std::uint32_t frames, AudioBufferList buffers);

  private:
    void connected(AudioDirection direction) override;
    void tick() override;
    bool settled() const override { return true; }
    void playersChanged() override;

    void begin();
    void end();
    bool mayFollow(const PulsePlayer& player);
    void deliverDue();
    void deliverPeriod();
    pa_usec_t periodEnd() const;

    PulseServer& server_;
    std::shared_ptr<const PulseTapDevice> device_;
    std::shared_ptr<PulseTap> tap_; ///< none: it was gone before this began
    StreamFormat format_;
    const PulseStreamCallbacks& callbacks_;
    std::map<std::uint32_t, std::unique_ptr<PulseMonitor>> monitors_; ///< by player
    std::set<std::uint32_t> refused_;                                 ///< players that the log has named
    pa_time_event* timer_ = nullptr;
    pa_usec_t beganAt_ = 0;
    std::uint64_t deliveredFrames_ = 0; ///< since then
    std::vector<std::int32_t> sum_;
    std::vector<std::int16_t> period_;
};

} // namespace velto
