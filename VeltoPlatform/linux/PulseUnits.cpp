#include "VeltoPlatform/linux/PulseUnits.h"

#include "VeltoPlatform/linux/PulseUnit.h"

namespace velto {

PulseUnits::PulseUnits(std::shared_ptr<PulseServer> server, std::shared_ptr<PulseTaps> taps)
    : server_(std::move(server)), taps_(std::move(taps)) {}

std::unique_ptr<OutputUnit> PulseUnits::instantiate() {
    return std::make_unique<PulseUnit>(server_, taps_);
}

} // namespace velto
