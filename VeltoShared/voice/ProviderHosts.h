// Where the voice providers are reached: settings whose defaults are the real services.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"

#include <string>
#include <string_view>

namespace velto::ProviderHosts {

/// Preference, text "host[:port]"; the default applies while it is missing, empty or of another type.
std::string_view preferenceKey(VoiceProvider provider);
std::string_view defaultHost(VoiceProvider provider);

/// The host in the installed platform's preferences. Any thread.
std::string host(VoiceProvider provider);

} // namespace velto::ProviderHosts
