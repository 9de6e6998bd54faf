// The private world of a rehearsal.
#include "rehearsal/director/Surroundings.h"

#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/voice/ProviderHosts.h"
#include "rehearsal/LocalAuthority.h"
#include "rehearsal/process/TextFile.h"

#include <boost/json.hpp>

#include <array>
#include <cstdlib>
#include <random>

namespace velto::rehearsal {
namespace {

constexpr std::array kFolders{"home", "data", "state", "config", "cache", "run", "tmp"};
/// What a program may see of the user's own environment: none of it leads back to the user's session.
constexpr std::array kPassedOn{"PATH",         "LANG",         "LC_ALL",       "TZ",
                               "ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"};

/// With characters that must be escaped on the way to the server.
std::string freshKey() {
    std::random_device random;
    return "rehearsal key/" + std::to_string(random()) + "&" + std::to_string(random());
}

} // namespace

Surroundings::Surroundings(std::filesystem::path folder) : folder_(std::move(folder)), apiKey_(freshKey()) {}

bool Surroundings::prepare() {
    std::error_code error;
    for (const auto* name : kFolders) {
        std::filesystem::create_directory(file(name), error);
        std::filesystem::permissions(file(name), std::filesystem::perms::owner_all, error);
        if (error)
            return false;
    }
    LocalAuthority authority;
    const auto issued = authority.issue("localhost");
    return !issued.certificatePEM.empty() &&
           writePrivateFile(file("authority.pem"), authority.certificatePEM()) &&
           writePrivateFile(file("server.pem"), issued.certificatePEM) &&
           writePrivateFile(file("server.key"), issued.keyPEM);
}

bool Surroundings::writePreferences(std::uint16_t serverPort) const {
    const auto folder = file("config") / AppPaths::bundleID;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const boost::json::object preferences{
        {ProviderHosts::geminiKey, "localhost:" + std::to_string(serverPort)}, {"provider", "gemini"}};
    return !error && writePrivateFile(folder / "preferences.json", boost::json::serialize(preferences));
}

std::map<std::string, std::string> Surroundings::environment() const {
    std::map<std::string, std::string> all{
        {"HOME", file("home")},
        {"XDG_DATA_HOME", file("data")},
        {"XDG_STATE_HOME", file("state")},
        {"XDG_CONFIG_HOME", file("config")},
        {"XDG_CACHE_HOME", file("cache")},
        {"XDG_RUNTIME_DIR", file("run")},
        {"TMPDIR", file("tmp")},
        {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
        {"SSL_CERT_FILE", file("authority.pem")},
    };
    for (const auto* name : kPassedOn)
        if (const char* const value = std::getenv(name)) // NOLINT(concurrency-mt-unsafe)
            all.emplace(name, value);
    return all;
}

void Surroundings::enter() const {
    for (const auto& [name, value] : environment())
        ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
}

std::string Surroundings::environmentForPeople(const std::map<std::string, std::string>& sound) const {
    std::string text = "XDG_DATA_HOME=" + file("data").string();
    for (const auto& [name, value] : sound)
        text.append(" ").append(name).append("=").append(value);
    return text;
}

std::filesystem::path Surroundings::applicationLog() const {
    return file("state") / "Velto" / "velto.log";
}

} // namespace velto::rehearsal
