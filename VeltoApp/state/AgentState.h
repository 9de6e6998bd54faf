// What the windows and the control socket show of the agent: the next call's goal and the stored keys.
#pragma once

#include "VeltoShared/core/AppSettings.h"
#include "VeltoShared/core/Published.h"
#include "VeltoShared/voice/KeyValidator.h"
#include "VeltoShared/voice/VoiceProvider.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

/// Held by `std::shared_ptr`; main thread only. Keys are read and validated off it.
class AgentState : public ObservableObject, public std::enable_shared_from_this<AgentState> {
  public:
    /// Answers whether the provider accepts the key; awaited on the main thread.
    using Validate = std::function<asio::awaitable<bool>(VoiceProvider, std::string)>;

    /// Starts a key refresh. `settings` must outlive it.
    static std::shared_ptr<AgentState> make(AppSettings& settings,
                                            Validate validate = KeyValidator::validate);
    static const std::shared_ptr<AgentState>& shared();

    Published<std::string> goal{*this, AppSettings::sampleGoal};
    Published<bool> apiKeyConfigured{*this, false}; ///< at least one stored key was validated
    Published<bool> hasGeminiKey{*this, false};     ///< a non-blank key is stored
    Published<bool> hasOpenAIKey{*this, false};
    Published<bool> geminiValid{*this, false}; ///< the stored key passed validation
    Published<bool> openaiValid{*this, false};
    Published<bool> validating{*this, false}; ///< a refresh was begun, and none has ended since

    /// The provider that a call would use: the chosen one if its key is stored, else whichever has a key.
    std::optional<VoiceProvider> activeProvider() const;
    bool anyKeyValid() const {
        return (hasGeminiKey() && geminiValid()) || (hasOpenAIKey() && openaiValid());
    }
    /// Reads the stored keys again, asks each one's provider, one after the other, and then publishes what
    /// was found in one step. Of two refreshes at the same time, the later to finish wins.
    void refreshKey();

  private:
    AgentState(AppSettings& settings, Validate validate)
        : settings_(settings), validate_(std::move(validate)) {}
    static asio::awaitable<void> refresh(std::weak_ptr<AgentState> weak, Validate validate);

    AppSettings& settings_;
    Validate validate_;
};

} // namespace velto
