#include "VeltoPlatform/linux/PulseUnits.h"

#include "VeltoPlatform/linux/PulseUnit.h"

namespace velto {

PulseUnits::PulseUnits(std::shared_ptr<PulseServer> server) : server_(std::move(server)) {}

std::unique_ptr<OutputUnit> PulseUnits::instantiate() {
    return std::make_unique<PulseUnit>(server_);
}

} // namespace velto
