#include "VeltoApp/state/AgentState.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/SecretStore.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/TextTrim.h"

namespace velto {
namespace {

bool stored(VoiceProvider provider) {
    const auto key = KeychainStore::get(keyAccount(provider));
    return key && !trimBlanks(*key).empty();
}

std::string described(bool present, bool valid) {
    return std::string(present ? "present" : "none") + (valid ? "/true" : "/false");
}

} // namespace

const std::shared_ptr<AgentState>& AgentState::shared() {
    static const auto state = [] {
        auto made = std::make_shared<AgentState>(AppSettings::shared());
        made->refreshKey();
        return made;
    }();
    return state;
}

std::optional<VoiceProvider> AgentState::activeProvider() const {
    const auto chosen = voiceProvider(settings_.provider());
    if (chosen == VoiceProvider::openai && hasOpenAIKey())
        return VoiceProvider::openai;
    if (hasGeminiKey())
        return VoiceProvider::gemini;
    if (hasOpenAIKey())
        return VoiceProvider::openai;
    return std::nullopt;
}

void AgentState::refreshKey() {
    validating.set(true);
    Blocking::post([weak = weak_from_this()] {
        const bool gemini = stored(VoiceProvider::gemini);
        const bool openai = stored(VoiceProvider::openai);
        MainThread::post([weak, gemini, openai, place = platform().secretStore->state()] {
            const auto self = weak.lock();
            if (!self)
                return;
            self->hasGeminiKey.set(gemini);
            self->hasOpenAIKey.set(openai);
            self->geminiValid.set(false);
            self->openaiValid.set(false);
            self->apiKeyConfigured.set(false);
            self->validating.set(false);
            Helper::log("keys: gemini=" + described(gemini, false) + " openai=" + described(openai, false));
            Helper::log("keys: kept in " + place);
        });
    });
}

} // namespace velto
