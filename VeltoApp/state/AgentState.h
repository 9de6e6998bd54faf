// What the windows and the control socket show of the agent: the next call's goal and the stored keys.
#pragma once

#include "VeltoShared/core/AppSettings.h"
#include "VeltoShared/core/Published.h"
#include "VeltoShared/voice/VoiceProvider.h"

#include <memory>
#include <optional>
#include <string>

namespace velto {

/// Held by `std::shared_ptr`; main thread only. Keys are read off it.
class AgentState : public ObservableObject, public std::enable_shared_from_this<AgentState> {
  public:
    explicit AgentState(AppSettings& settings) : settings_(settings) {}
    /// The process's state; the first use starts a key refresh.
    static const std::shared_ptr<AgentState>& shared();

    Published<std::string> goal{*this, AppSettings::sampleGoal};
    Published<bool> apiKeyConfigured{*this, false}; ///< at least one stored key was validated
    Published<bool> hasGeminiKey{*this, false};     ///< a non-blank key is stored
    Published<bool> hasOpenAIKey{*this, false};
    Published<bool> geminiValid{*this, false}; ///< the stored key passed validation
    Published<bool> openaiValid{*this, false};
    Published<bool> validating{*this, false}; ///< a refresh is running

    /// The provider that a call would use: the chosen one if its key is stored, else whichever has a key.
    std::optional<VoiceProvider> activeProvider() const;
    bool anyKeyValid() const {
        return (hasGeminiKey() && geminiValid()) || (hasOpenAIKey() && openaiValid());
    }
    /// Reads the stored keys again. Keys are not validated against their providers here: they stay unproven.
    void refreshKey();

  private:
    AppSettings& settings_;
};

} // namespace velto
