// The drivers' lines and the sound devices of this computer for a script: velto-driver-tool install FOLDER,
// uninstall, devices, hear OUTPUT INPUT.
#include "VeltoApp/drivers/DriverLines.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxDriverPlace.h"
#include "VeltoPlatform/linux/PulseHardware.h"
#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseUnits.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioRouting.h"
#include "VeltoShared/audio/LoopbackProbe.h"

#include <iostream>
#include <set>

int main(int argc, char** argv) {
    using namespace velto;
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto server = std::make_shared<PulseServer>([](const std::string&) {});
    PulseHardware hardware(server);
    PulseUnits units(server);
    LinuxDriverPlace place;
    installPlatform({.audioHardware = &hardware, .outputUnits = &units, .driverPlace = &place});
    if (words.at(0) == "install") {
        std::cout << DriverLines::install(words.at(1));
    } else if (words[0] == "uninstall") {
        std::cout << DriverLines::uninstall();
    } else if (words[0] == "hear") {
        const auto heard = LoopbackProbe::run(words.at(1), words.at(2), 0.5, 24000);
        std::cout << heard.capturedRMS << ' ' << heard.capturedPeak << '\n';
    } else {
        std::set<std::string> lines;
        for (const auto& device : AudioDevices::all())
            lines.insert(device.name + ": " + std::to_string(device.inputChannels) + " in, " +
                         std::to_string(device.outputChannels) + " out\n");
        for (const auto& line : lines)
            std::cout << line;
        std::cout << "default " << AudioRouting::defaultInputName() << ", "
                  << AudioRouting::defaultOutputName() << '\n';
    }
}
