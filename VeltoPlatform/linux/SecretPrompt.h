// A question of the keyring to its user, on the screen until it is answered.
#pragma once

#include "VeltoPlatform/linux/Bus.h"

#include <memory>
#include <string>

namespace velto {

/// Never dismissed from here: gnome-keyring 42 ends with a failed assertion when a prompt that it shows is
/// dismissed by its client, and takes the keys of all programs with it. One thread at a time.
class SecretPrompt {
  public:
    enum class State {
        open,
        granted,
        refused, ///< dismissed by the user, or it could not be shown
        lost,    ///< the keyring is gone
    };

    /// Watches the prompt at `path` of the process with the unique name `service`; show it afterwards.
    SecretPrompt(std::shared_ptr<Bus> bus, const std::string& service, const std::string& path);
    SecretPrompt(const SecretPrompt&) = delete;
    SecretPrompt& operator=(const SecretPrompt&) = delete;

    /// Waits for its end; `open` when the time is over first.
    State await(Bus::Limit limit);

  private:
    struct SlotRelease {
        void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
    };
    using Slot = std::unique_ptr<sd_bus_slot, SlotRelease>;

    static int completed(sd_bus_message* signal, void* self, sd_bus_error*);
    static int serviceGone(sd_bus_message* signal, void* self, sd_bus_error*);

    std::shared_ptr<Bus> bus_;
    State state_ = State::open;
    Slot completion_;
    Slot departure_;
};

} // namespace velto
