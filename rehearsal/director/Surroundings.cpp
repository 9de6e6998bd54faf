// The private world of a rehearsal.
#include "rehearsal/director/Surroundings.h"

#include "VeltoPlatform/ShellWord.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/voice/ProviderHosts.h"
#include "rehearsal/LocalAuthority.h"
#include "rehearsal/process/TextFile.h"

#include <boost/json.hpp>

#include <cstdlib>

namespace velto::rehearsal {
bool Surroundings::prepare() {
    auto environment = makePrivateFolders(folder_);
    if (!environment)
        return false;
    environment_ = std::move(*environment);
    environment_["SSL_CERT_FILE"] = file("authority.pem");
    LocalAuthority authority;
    const auto issued = authority.issue("localhost");
    return !issued.certificatePEM.empty() &&
           writePrivateFile(file("authority.pem"), authority.certificatePEM()) &&
           writePrivateFile(file("server.pem"), issued.certificatePEM) &&
           writePrivateFile(file("server.key"), issued.keyPEM);
}

bool Surroundings::writePreferences(VoiceProvider provider, std::uint16_t serverPort,
                                    boost::json::object others) const {
    const auto folder = file("config") / AppPaths::bundleID;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    auto preferences = std::move(others);
    preferences["provider"] = rawValue(provider);
    for (const auto each : kAllVoiceProviders)
        preferences[ProviderHosts::preferenceKey(each)] = "localhost:" + std::to_string(serverPort);
    return !error && writePrivateFile(folder / "preferences.json", boost::json::serialize(preferences));
}

void Surroundings::enter(const Environment& environment) {
    for (const auto& [name, value] : environment)
        ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
}

Environment Surroundings::callersDisplay() {
    // X11 alone: a Wayland socket lies in the runtime folder, of which programs get a private one.
    Environment display;
    for (const char* name : {"DISPLAY", "XAUTHORITY"})
        if (const char* value = std::getenv(name);
            value != nullptr && *value != '\0') // NOLINT(concurrency-mt-unsafe)
            display[name] = value;
    if (!display.contains("DISPLAY"))
        return {};
    if (!display.contains("XAUTHORITY"))
        if (const char* home = std::getenv("HOME")) // NOLINT(concurrency-mt-unsafe)
            display["XAUTHORITY"] = std::filesystem::path(home) / ".Xauthority";
    return display;
}

bool Surroundings::writeShellLines(const Environment& environment,
                                   const std::filesystem::path& programs) const {
    std::string text = "export PATH=" + shellWord(programs.native()) + ":\"$PATH\"\n";
    for (const auto& [name, value] : environment)
        if (name != "PATH")
            text.append("export ").append(name).append("=").append(shellWord(value)).append("\n");
    return writePrivateFile(shellLines(), text);
}

std::filesystem::path Surroundings::recordings() const {
    return file("data") / AppPaths::bundleID / "Recordings";
}

std::filesystem::path Surroundings::applicationLog() const {
    return file("state") / "Velto" / "velto.log";
}

} // namespace velto::rehearsal
