// An output unit on the sound server: keeps one stream on one named device, through losses of both.
#pragma once

#include "VeltoPlatform/OutputUnits.h"
#include "VeltoPlatform/linux/PulseMix.h"
#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseStream.h"

#include <memory>
#include <optional>
#include <string>

namespace velto {

class PulseTaps;

/// A unit with its input side on captures, every other one plays. Callbacks come on the sound thread. `start`
/// does not wait for the server: while the unit is started it opens its device whenever the server and the
/// device are there, and opens it again when the stream ends, or stands still for half a second without the
/// device being suspended (then waiting twice as long each time, up to four seconds). On the device of a tap
/// it captures a `PulseMix`.
class PulseUnit final : public OutputUnit, private PulseListener {
  public:
    PulseUnit(std::shared_ptr<PulseServer> server, std::shared_ptr<PulseTaps> taps);
    ~PulseUnit() override;

    AudioStatus enableIO(UnitScope scope, std::uint32_t element, bool on) override;
    /// `kAudioUnready` when the server has no such device.
    AudioStatus setCurrentDevice(AudioObjectID device) override;
    AudioStatus setStreamFormat(UnitScope scope, std::uint32_t element, const StreamFormat& format) override;
    AudioStatus setInputCallback(InputCallback callback, void* context) override;
    AudioStatus setRenderCallback(RenderCallback callback, void* context) override;
    /// `kAudioUnready` without a device on that side, a callback, or a format that the server can carry.
    AudioStatus initialize() override;
    AudioStatus start() override;
    AudioStatus stop() override;
    AudioStatus uninitialize() override;
    AudioStatus render(const RenderContext& render, std::uint32_t frames, AudioBufferList buffers) override;

  private:
    void connected(AudioDirection direction) override;
    void tick() override;
    bool settled() const override;

    void seek();
    void sought(const char* serverName, const char* description, bool last);
    void open();
    void close();
    void ended();
    void silent(const std::string& reason);

    std::shared_ptr<PulseServer> server_;
    std::shared_ptr<PulseTaps> taps_;                 ///< may be none
    std::shared_ptr<const PulseTapDevice> tapDevice_; ///< none: a device of the server's
    AudioDirection direction_ = AudioDirection::output;
    StreamFormat format_;
    PulseStreamCallbacks callbacks_;
    std::string serverName_;
    std::string description_;
    bool initialized_ = false;

    // Under the server's lock:
    bool started_ = false;
    std::string silentBecause_; ///< "" while sound moves, or may be about to
    std::unique_ptr<PulseStream> stream_;
    std::unique_ptr<PulseMix> mix_;
    pa_operation* search_ = nullptr;
    std::optional<std::string> found_;
    bool foundExactly_ = false;
    pa_usec_t nextSeek_ = 0;
    pa_usec_t patience_ = 0;
    pa_usec_t quietTicks_ = 0; ///< ticks in a row that saw nothing move
    pa_usec_t openedAt_ = 0;
};

} // namespace velto
