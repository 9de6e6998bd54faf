// Where the voice providers are reached: settings whose defaults are the real services.
#pragma once

#include <string>
#include <string_view>

namespace velto::ProviderHosts {

/// Preference, text "host[:port]"; the default applies while it is missing, empty or of another type.
inline constexpr std::string_view geminiKey = "geminiHost";
inline constexpr std::string_view geminiDefault = "generativelanguage.googleapis.com";

/// The host in the installed platform's preferences. Any thread.
std::string gemini();

} // namespace velto::ProviderHosts
