// One tap on the sound server: which streams it carries, and who captures them.
#pragma once

#include "VeltoPlatform/ProcessTaps.h"
#include "VeltoPlatform/linux/PulsePlayers.h"

#include <memory>
#include <string>
#include <vector>

namespace velto {

/// Everything happens on the sound thread or under its lock.
class PulseTap {
  public:
    /// Captures the tap.
    class Reader {
      public:
        virtual ~Reader() = default;
        /// The players are others than before.
        virtual void playersChanged() = 0;
    };

    PulseTap(std::string uid, pid_t process);

    const std::string& uid() const { return uid_; }
    /// The streams to capture: those of the process and of its descendants.
    const PulsePlayers::Players& players() const { return players_; }

    void update(const PulsePlayers::Players& everyone);
    void add(Reader& reader);
    void remove(Reader& reader);

  private:
    std::string uid_;
    pid_t process_;
    PulsePlayers::Players players_;
    std::vector<Reader*> readers_;
};

/// The private device that carries a tap; shared with the units on it.
struct PulseTapDevice {
    AudioObjectID id = 0;
    AggregateDeviceDescription description;
    std::shared_ptr<PulseTap> tap; ///< under the server's lock; none when tap or device were destroyed
};

} // namespace velto
