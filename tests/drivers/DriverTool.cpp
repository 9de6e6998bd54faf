// The installer and the sound devices of this computer for a script: velto-driver-tool install, uninstall,
// devices, hear OUTPUT INPUT.
#include "VeltoApp/drivers/DriverState.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxDriverPlace.h"
#include "VeltoPlatform/linux/LinuxFolders.h"
#include "VeltoPlatform/linux/PulseHardware.h"
#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseUnits.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioRouting.h"
#include "VeltoShared/audio/LoopbackProbe.h"
#include "VeltoShared/core/Executors.h"
#include "tests/drivers/AdministratorShell.h"

#include <boost/asio/io_context.hpp>

#include <cstdlib>
#include <iostream>
#include <set>

namespace {

using namespace velto;

/// Prints the log that a window would show.
int run(void (DriverState::*job)()) {
    LinuxFolders folders("/nowhere/velto");
    LinuxDriverPlace place;
    Platform parts;
    parts.folders = &folders;
    parts.driverPlace = &place;
    installPlatform(parts);
    asio::io_context loop;
    MainThread::install(loop.get_executor());
    Blocking::install(loop.get_executor());
    const char* const user = std::getenv("PKEXEC_UID");
    const auto forWhom = user ? static_cast<uid_t>(std::stoul(user)) : ::getuid();
    const auto state = std::make_shared<DriverState>(
        [&](const std::string& line) { return test::runInShell(line, forWhom); });
    (state.get()->*job)();
    loop.run();
    std::cout << state->log() << '\n';
    return 0;
}

int onSound(const std::vector<std::string>& words) {
    const auto server = std::make_shared<PulseServer>([](const std::string&) {});
    PulseHardware hardware(server);
    PulseUnits units(server);
    Platform parts;
    parts.audioHardware = &hardware;
    parts.outputUnits = &units;
    installPlatform(parts);
    if (words.size() == 3 && words[0] == "hear") {
        const auto heard = LoopbackProbe::run(words[1], words[2], 0.5, 24000);
        std::cout << heard.capturedRMS << ' ' << heard.capturedPeak << '\n';
        return 0;
    }
    std::set<std::string> lines;
    for (const auto& device : AudioDevices::all())
        lines.insert(device.name + ": " + std::to_string(device.inputChannels) + " in, " +
                     std::to_string(device.outputChannels) + " out");
    for (const auto& line : lines)
        std::cout << line << '\n';
    std::cout << "default " << AudioRouting::defaultInputName() << ", " << AudioRouting::defaultOutputName()
              << '\n';
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words == std::vector<std::string>{"install"})
        return run(&DriverState::install);
    if (words == std::vector<std::string>{"uninstall"})
        return run(&DriverState::uninstall);
    return onSound(words);
}
