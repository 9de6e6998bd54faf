// The user's settings: published properties over the preferences store. The key of each property is its name.
#pragma once

#include "VeltoPlatform/Preferences.h"
#include "VeltoShared/core/Published.h"

#include <string>

namespace velto {

/// One setting: reads from memory; a write tells the observers, sets the value and stores it. Main thread.
template <class T>
class Setting {
  public:
    Setting(ObservableObject& owner, Preferences& store, std::string key, T loaded)
        : store_(store), key_(std::move(key)), value_(owner, std::move(loaded)) {}

    const T& get() const { return value_.get(); }
    const T& operator()() const { return value_.get(); }
    void set(T next) {
        value_.set(std::move(next));
        store_.set(key_, PreferenceValue(value_.get()));
    }
    Subscription observe(std::function<void(const T&)> observer) {
        return value_.observe(std::move(observer));
    }

  private:
    Preferences& store_;
    std::string key_;
    Published<T> value_;
};

/// Loaded once, at construction, without writing anything. Main thread, but for the creation of `shared`.
class AppSettings : public ObservableObject {
  public:
    static constexpr const char* sampleGoal =
        "Have a short natural conversation. Greet briefly, then listen and answer the caller.";

    /// Over the platform's preferences.
    static AppSettings& shared();
    /// `defaults` must outlive the object.
    explicit AppSettings(Preferences& defaults);

  private:
    Preferences& defaults_;

  public:
    Setting<std::string> defaultGoal;   ///< goal offered in the settings window
    Setting<bool> launchAtLogin;        ///< false
    Setting<bool> recordCalls;          ///< false; record each call to a WAV file
    Setting<bool> showDebug;            ///< true; show the "Debug" tab
    Setting<bool> hasCompletedSetup;    ///< false
    Setting<std::string> provider;      ///< "gemini", "openai" or empty: no explicit choice
    Setting<std::string> geminiVoice;   ///< "Puck"
    Setting<std::string> openaiVoice;   ///< "alloy"
    Setting<bool> monitorAgent;         ///< false; play the agent's voice to a monitor device too
    Setting<std::string> monitorDevice; ///< empty; name of that device
    Setting<bool> routeSystemAudio;     ///< true; make the virtual devices the defaults during a call
    Setting<bool> restoreDevices;       ///< true; put the previous defaults back after a call
    Setting<bool> useProcessTap;        ///< false; capture the callee from the phone app itself
    Setting<bool> muteCallLocally;      ///< false; silence the phone app on this computer while tapped
};

} // namespace velto
