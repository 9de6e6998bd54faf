// The two voice providers: names, voices, defaults.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace velto {

enum class VoiceProvider { gemini, openai };

inline constexpr std::array kAllVoiceProviders{VoiceProvider::gemini, VoiceProvider::openai};

/// "gemini" or "openai".
std::string_view rawValue(VoiceProvider provider);
/// Exactly the two raw values; none for any other text.
std::optional<VoiceProvider> voiceProvider(std::string_view rawValue);
std::string_view displayName(VoiceProvider provider);
std::string_view defaultVoice(VoiceProvider provider);
/// The provider's voice names, the default voice first.
std::span<const std::string_view> voices(VoiceProvider provider);
/// The model used when none is configured.
std::string_view defaultModel(VoiceProvider provider);
/// Rate of the audio that the provider expects, Hz.
double inputRate(VoiceProvider provider);
/// The account under which the provider's key is kept.
std::string_view keyAccount(VoiceProvider provider);

} // namespace velto
