// Who plays what on the sound server, kept up to date.
#pragma once

#include "VeltoPlatform/linux/PulseServer.h"

#include <pulse/introspect.h>
#include <pulse/proplist.h>
#include <pulse/subscribe.h>

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace velto {

/// The process that the server names in the properties of a client or of a stream; 0 when it names none.
pid_t processOf(pa_proplist* properties);

/// One stream that is played.
struct PulsePlayer {
    std::uint32_t index = PA_INVALID_INDEX; ///< the server's, of the stream
    std::uint32_t sink = PA_INVALID_INDEX;
    pid_t pid = 0;

    bool operator==(const PulsePlayer&) const = default;
};

/// Everything happens on the sound thread or under its lock.
class PulsePlayers final : private PulseListener {
  public:
    using Players = std::vector<PulsePlayer>;

    /// `changed` is told each time the list is other than before; it may not end this.
    PulsePlayers(PulseServer& server, std::function<void()> changed);
    ~PulsePlayers() override;

    /// Empty while the server is away.
    const Players& list() const { return list_; }

  private:
    void connected(AudioDirection direction) override;
    void tick() override;
    bool settled() const override { return operations_.empty(); }

    void subscribe();
    void ask();
    void add(const pa_sink_input_info& player);
    void answered(bool whole);
    void forgetQuestion();
    void publish(Players players);

    PulseServer& server_;
    std::function<void()> changed_;
    Players list_;
    std::vector<pa_operation*> operations_; ///< of the question under way
    bool askAgain_ = false;                 ///< something has changed since it was asked
    std::map<std::uint32_t, pid_t> clients_;
    Players arriving_;
};

} // namespace velto
