// Reading the providers' hosts from the preferences.
#include "VeltoShared/voice/ProviderHosts.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Preferences.h"

namespace velto::ProviderHosts {

std::string gemini() {
    auto* preferences = platform().preferences;
    auto host = preferences ? preferences->text(std::string(geminiKey)) : std::nullopt;
    if (!host || host->empty())
        return std::string(geminiDefault);
    return *host;
}

} // namespace velto::ProviderHosts
