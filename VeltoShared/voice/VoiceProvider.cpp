#include "VeltoShared/voice/VoiceProvider.h"

#include "VeltoShared/core/SecretKey.h"

namespace velto {
namespace {

constexpr std::array<std::string_view, 30> kGeminiVoices{
    "Puck",      "Charon",        "Kore",         "Fenrir",    "Aoede",      "Leda",
    "Orus",      "Zephyr",        "Callirrhoe",   "Autonoe",   "Enceladus",  "Iapetus",
    "Umbriel",   "Algieba",       "Despina",      "Erinome",   "Algenib",    "Rasalgethi",
    "Laomedeia", "Achernar",      "Alnilam",      "Schedar",   "Gacrux",     "Pulcherrima",
    "Achird",    "Zubenelgenubi", "Vindemiatrix", "Sadachbia", "Sadaltager", "Sulafat"};
constexpr std::array<std::string_view, 8> kOpenAIVoices{"alloy", "ash",  "ballad",  "coral",
                                                        "echo",  "sage", "shimmer", "verse"};

struct Traits {
    std::string_view rawValue;
    std::string_view displayName;
    std::string_view defaultModel;
    std::string_view keyAccount;
    double inputRate;
    std::span<const std::string_view> voices;
};

const Traits& traits(VoiceProvider provider) {
    static constexpr Traits kGemini{
        "gemini", "Gemini Live", "gemini-3.1-flash-live-preview", SecretKey::geminiAPIKey,
        16000,    kGeminiVoices};
    static constexpr Traits kOpenAI{
        "openai", "OpenAI Realtime", "gpt-4o-realtime-preview", SecretKey::openAIAPIKey,
        24000,    kOpenAIVoices};
    switch (provider) {
    case VoiceProvider::gemini:
        return kGemini;
    case VoiceProvider::openai:
        break;
    }
    return kOpenAI;
}

} // namespace

std::string_view rawValue(VoiceProvider provider) {
    return traits(provider).rawValue;
}
std::string_view displayName(VoiceProvider provider) {
    return traits(provider).displayName;
}
std::string_view defaultVoice(VoiceProvider provider) {
    return traits(provider).voices.front();
}
std::span<const std::string_view> voices(VoiceProvider provider) {
    return traits(provider).voices;
}
std::string_view defaultModel(VoiceProvider provider) {
    return traits(provider).defaultModel;
}
double inputRate(VoiceProvider provider) {
    return traits(provider).inputRate;
}
std::string_view keyAccount(VoiceProvider provider) {
    return traits(provider).keyAccount;
}

std::optional<VoiceProvider> voiceProvider(std::string_view text) {
    for (const auto provider : kAllVoiceProviders)
        if (rawValue(provider) == text)
            return provider;
    return std::nullopt;
}

} // namespace velto
