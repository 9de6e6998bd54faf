// One output unit of the simulated computer.
#pragma once

#include "VeltoPlatform/OutputUnits.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace velto {

class SimulatedAudio;

/// Driven by its `SimulatedAudio`, under whose lock everything happens.
class SimulatedUnit final : public OutputUnit {
  public:
    explicit SimulatedUnit(SimulatedAudio& audio);
    ~SimulatedUnit() override;

    AudioStatus enableIO(UnitScope scope, std::uint32_t element, bool on) override;
    AudioStatus setCurrentDevice(AudioObjectID device) override;
    AudioStatus setStreamFormat(UnitScope scope, std::uint32_t element, const StreamFormat& format) override;
    AudioStatus setInputCallback(InputCallback callback, void* context) override;
    AudioStatus setRenderCallback(RenderCallback callback, void* context) override;
    AudioStatus initialize() override;
    AudioStatus start() override;
    AudioStatus stop() override;
    AudioStatus uninitialize() override;
    AudioStatus render(const RenderContext& render, std::uint32_t frames, AudioBufferList buffers) override;

    bool captures(std::string_view device) const;
    bool plays(std::string_view device) const;
    bool running() const { return running_; }
    const StreamFormat& format() const { return format_; }

    AudioStatus deliver(std::span<const std::int16_t> interleaved);
    std::vector<std::int16_t> pull(std::uint32_t frames);

  private:
    AudioStatus record(std::string call);
    bool runsOn(std::string_view device) const;

    SimulatedAudio& audio_;
    std::string device_;
    StreamFormat format_;
    InputCallback input_ = nullptr;
    RenderCallback output_ = nullptr;
    void* context_ = nullptr;
    bool initialized_ = false;
    bool running_ = false;
    std::span<const std::int16_t> captured_;
};

} // namespace velto
