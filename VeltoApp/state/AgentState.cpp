#include "VeltoApp/state/AgentState.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/SecretStore.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/TextTrim.h"

namespace velto {
namespace {

struct StoredKeys {
    std::string gemini; ///< empty: none
    std::string openai;
    std::string place;
};

std::string stored(VoiceProvider provider) {
    const auto key = KeychainStore::get(keyAccount(provider));
    return key ? std::string(trimBlanks(*key)) : std::string();
}

asio::awaitable<StoredKeys> readStored() {
    co_return StoredKeys{stored(VoiceProvider::gemini), stored(VoiceProvider::openai),
                         platform().secretStore->state()};
}

std::string described(bool present, bool valid) {
    return std::string(present ? "present" : "none") + (valid ? "/true" : "/false");
}

} // namespace

std::shared_ptr<AgentState> AgentState::make(AppSettings& settings, Validate validate) {
    std::shared_ptr<AgentState> made(new AgentState(settings, std::move(validate)));
    made->refreshKey();
    return made;
}

const std::shared_ptr<AgentState>& AgentState::shared() {
    static const auto state = make(AppSettings::shared());
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
    MainThread::spawn(refresh(weak_from_this(), validate_));
}

asio::awaitable<void> AgentState::refresh(std::weak_ptr<AgentState> weak, Validate validate) {
    const auto keys = co_await Blocking::run(readStored());
    bool isGeminiValid = false;
    bool isOpenAIValid = false;
    if (!keys.gemini.empty() && !weak.expired())
        isGeminiValid = co_await validate(VoiceProvider::gemini, keys.gemini);
    if (!keys.openai.empty() && !weak.expired())
        isOpenAIValid = co_await validate(VoiceProvider::openai, keys.openai);
    const auto self = weak.lock();
    if (!self)
        co_return;
    self->hasGeminiKey.set(!keys.gemini.empty());
    self->hasOpenAIKey.set(!keys.openai.empty());
    self->geminiValid.set(isGeminiValid);
    self->openaiValid.set(isOpenAIValid);
    self->apiKeyConfigured.set(isGeminiValid || isOpenAIValid);
    self->validating.set(false);
    Helper::log("keys: gemini=" + described(!keys.gemini.empty(), isGeminiValid) +
                " openai=" + described(!keys.openai.empty(), isOpenAIValid));
    Helper::log("keys: kept in " + keys.place);
}

} // namespace velto
