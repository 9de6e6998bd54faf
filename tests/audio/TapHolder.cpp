// Captures a muted tap of the process whose number it is given until it is killed; a line says that it does.
#include "VeltoPlatform/linux/PulseTaps.h"
#include "VeltoPlatform/linux/PulseUnits.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>

int main(int, char** argv) {
    using namespace velto;
    const auto server = std::make_shared<PulseServer>();
    const auto taps = std::make_shared<PulseTaps>(server);
    PulseUnits units(server, taps);
    const auto process = static_cast<AudioObjectID>(std::strtoul(argv[1], nullptr, 10));
    const auto tap =
        taps->createProcessTap({"VeltoTap", {process}, false, true, false, true, TapMute::mutedWhenTapped});
    if (!tap)
        return 1;
    const auto device = taps->createAggregateDevice(
        {"VeltoTap", "velto.tap.held", true, false, {taps->tapUID(*tap).value_or("")}});
    const auto unit = units.instantiate();
    unit->enableIO(UnitScope::input, 1, true);
    unit->setCurrentDevice(device.value_or(0));
    unit->setStreamFormat(UnitScope::output, 1, {16000, 2});
    unit->setInputCallback([](void*, const RenderContext&, std::uint32_t) { return kAudioNoError; }, nullptr);
    if (unit->initialize() != kAudioNoError || unit->start() != kAudioNoError)
        return 1;
    std::cout << "holding" << std::endl;
    ::pause();
    return 0;
}
