// Reading the providers' hosts from the preferences.
#include "VeltoShared/voice/ProviderHosts.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Preferences.h"

namespace velto::ProviderHosts {

std::string_view preferenceKey(VoiceProvider provider) {
    switch (provider) {
    case VoiceProvider::gemini:
        return "geminiHost";
    case VoiceProvider::openai:
        return "openAIHost";
    }
    return {};
}

std::string_view defaultHost(VoiceProvider provider) {
    switch (provider) {
    case VoiceProvider::gemini:
        return "generativelanguage.googleapis.com";
    case VoiceProvider::openai:
        return "api.openai.com";
    }
    return {};
}

std::string host(VoiceProvider provider) {
    auto* preferences = platform().preferences;
    auto host = preferences ? preferences->text(std::string(preferenceKey(provider))) : std::nullopt;
    if (!host || host->empty())
        return std::string(defaultHost(provider));
    return *host;
}

} // namespace velto::ProviderHosts
