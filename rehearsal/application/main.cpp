// The application of a rehearsal: the real one, with a simulated desktop and keyring around it.
#include "VeltoApp/app/Application.h"
#include "VeltoApp/app/Helper.h"
#include "VeltoPlatform/linux/LinuxPlatform.h"
#include "VeltoPlatform/simulated/SimulatedDesktop.h"
#include "VeltoPlatform/simulated/SimulatedStores.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"
#include "rehearsal/application/LineDesktop.h"

#include <CLI/CLI.hpp>

#include <iostream>

int main(int argc, char** argv) {
    using namespace velto;
    CLI::App commandLine("The application of a rehearsal", "velto-rehearsal-app");
    std::string line;
    std::string key;
    commandLine.add_option("--line", line, "socket of the person on the line")->required();
    commandLine.add_option("--key", key, "API key of the rehearsal's voice server")
        ->envname("VELTO_REHEARSAL_KEY")
        ->required();
    CLI11_PARSE(commandLine, argc, argv);

    SimulatedDesktop desktop;
    SimulatedSecretStore keyring;
    const LinuxPlatform platform(
        *argv, AppPaths::bundleID, [](const std::string& trouble) { Helper::log(trouble); },
        [&](Platform& parts) {
            parts.accessibility = &desktop;
            parts.workspace = &desktop;
            parts.secretStore = &keyring;
        });
    KeychainStore::set(key, SecretKey::geminiAPIKey);

    std::shared_ptr<rehearsal::LineDesktop> phone;
    return runHeadless([&] {
        phone = rehearsal::LineDesktop::connect(desktop, Background::executor(), line);
        if (!phone) {
            std::cerr << "velto-rehearsal-app: nobody listens at " << line << '\n';
            std::_Exit(1);
        }
    });
}
