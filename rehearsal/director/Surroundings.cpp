// The private world of a rehearsal.
#include "rehearsal/director/Surroundings.h"

#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/voice/ProviderHosts.h"
#include "rehearsal/LocalAuthority.h"
#include "rehearsal/process/TextFile.h"

#include <boost/json.hpp>

#include <cstdlib>
#include <random>

namespace velto::rehearsal {
namespace {

/// Twenty digits that nothing else has.
std::string freshMark() {
    std::random_device random;
    std::uniform_int_distribution<std::uint64_t> digits(1'000'000'000, 9'999'999'999);
    return std::to_string(digits(random)) + std::to_string(digits(random));
}

} // namespace

Surroundings::Surroundings(std::filesystem::path folder)
    : folder_(std::move(folder)), keyMark_(freshMark()),
      // With characters that must be escaped on the way to the server.
      apiKey_("rehearsal key/" + keyMark_ + "&") {}

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

bool Surroundings::writePreferences(std::uint16_t serverPort) const {
    const auto folder = file("config") / AppPaths::bundleID;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const boost::json::object preferences{
        {ProviderHosts::preferenceKey(VoiceProvider::gemini), "localhost:" + std::to_string(serverPort)}, {"provider", "gemini"}};
    return !error && writePrivateFile(folder / "preferences.json", boost::json::serialize(preferences));
}

void Surroundings::enter(const Environment& environment) {
    for (const auto& [name, value] : environment)
        ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
}

std::string Surroundings::environmentForPeople(const std::map<std::string, std::string>& sound) const {
    std::string text = "XDG_DATA_HOME=" + file("data").string();
    for (const auto& [name, value] : sound)
        text.append(" ").append(name).append("=").append(value);
    return text;
}

std::vector<std::string> Surroundings::filesWithKey() const {
    namespace fs = std::filesystem;
    std::vector<std::string> found;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder_, fs::directory_options::skip_permission_denied, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error))
        if (std::error_code ignored; entry->is_regular_file(ignored) &&
                                     readFile(entry->path()).value_or("").find(keyMark_) != std::string::npos)
            found.push_back(entry->path().lexically_relative(folder_));
    return found;
}

std::filesystem::path Surroundings::applicationLog() const {
    return file("state") / "Velto" / "velto.log";
}

} // namespace velto::rehearsal
