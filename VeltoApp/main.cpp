// The application: composition root of the program that users start.
#include "VeltoApp/app/Application.h"
#include "VeltoApp/app/Helper.h"
#include "VeltoApp/views/app/Windows.h"
#include "VeltoPlatform/linux/LinuxPlatform.h"
#include "VeltoShared/core/AppPaths.h"

#include <CLI/CLI.hpp>

int main(int argc, char** argv) {
    CLI::App commandLine("Velto, an AI voice agent for cellular calls", "velto");
    bool headless = false;
    commandLine.add_flag("--headless", headless, "run without windows; drive it with veltoctl");
    commandLine.set_version_flag("--version", "velto " VELTO_VERSION);
    try {
        commandLine.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return commandLine.exit(error) == 0 ? 0 : 2;
    }
    const velto::LinuxPlatform platform(*argv, velto::AppPaths::bundleID,
                                        [](const std::string& line) { velto::Helper::log(line); });
    return headless ? velto::runHeadless() : velto::runWindowed(argc, argv);
}
