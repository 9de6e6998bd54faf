// One tap on the sound server: which streams it carries, and who captures them.
#pragma once

#include "VeltoPlatform/ProcessTaps.h"
#include "VeltoPlatform/linux/PulsePlayers.h"
#include "VeltoPlatform/linux/PulseTapSink.h"

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

    /// From now on the process is muted while there are readers. Once, before anything else.
    void muteWith(std::unique_ptr<PulseTapSink> sink);
    /// Falls silent for its readers, and gives the process its sound back. Waits for the server; without its
    /// lock.
    void end(PulseServer& server);
    bool mutes() const { return sink_ != nullptr; }

    const std::string& uid() const { return uid_; }
    /// The streams to capture: those of the process and of its descendants, without those that are about to
    /// be moved, since that ends a monitor.
    const PulsePlayers::Players& players() const { return players_; }

    void update(const PulsePlayers::Players& everyone);
    /// What is to be captured may be other than before.
    void refresh();
    void add(Reader& reader);
    void remove(Reader& reader);

  private:
    std::string uid_;
    pid_t process_;
    PulsePlayers::Players ofProcess_;
    PulsePlayers::Players players_;
    std::unique_ptr<PulseTapSink> sink_; ///< none: the process stays audible
    std::vector<Reader*> readers_;
};

/// The private device that carries a tap; shared with the units on it.
struct PulseTapDevice {
    AudioObjectID id = 0;
    AggregateDeviceDescription description;
    std::shared_ptr<PulseTap> tap; ///< under the server's lock; none when tap or device were destroyed
};

} // namespace velto
