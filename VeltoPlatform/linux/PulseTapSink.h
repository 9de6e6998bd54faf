// The silent sink that the streams of a muted program are played to while its tap is captured.
#pragma once

#include "VeltoPlatform/linux/PulsePlayers.h"
#include "VeltoPlatform/linux/PulseServer.h"

#include <pulse/introspect.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>

namespace velto {

/// Streams are parked on the sink and brought home again; what is begun is not waited for. The sink is loaded
/// again when the server returns. On the sound thread or under its lock, except where it says otherwise.
class PulseTapSink final : private PulseListener {
  public:
    /// The server's name for it, the same for every run: there is one sink at a time.
    static constexpr std::string_view serverName = "velto_tap";
    /// The sink's property that tells which process it belongs to; by it the next run recognises what a
    /// killed one has left.
    static constexpr const char* ownerProperty = "velto.tap.owner";
    /// Whether it is such a sink, of whatever run and name: PulseAudio gives a name that is taken a number.
    static bool isOne(const pa_sink_info& sink);
    /// Whether it is such a sink, and of this process.
    static bool isOurs(const pa_sink_info& sink);

    /// Waits for the server; without its lock. None when there is no sink to be had. `changed` is told when
    /// `isSettled` may answer otherwise; it may not end this.
    static std::unique_ptr<PulseTapSink> load(PulseServer& server, std::function<void()> changed);
    /// Leaves the sink loaded.
    ~PulseTapSink() override;

    /// Moves those players to the sink that are not there yet, and forgets about all others.
    void park(const PulsePlayers::Players& players);
    /// Moves all of them back to where they were, or to the default sink where that has gone.
    void bringHome();
    /// Unloads the sink and waits for the server; without its lock.
    void unload();

    /// Whether the player will not be moved any more: it has been, or refuses, or there is no sink.
    bool isSettled(std::uint32_t player) const;

  private:
    struct Parked {
        PulseTapSink* self = nullptr;
        std::uint32_t home = PA_INVALID_INDEX; ///< none: it was created on the sink
        bool away = false;                     ///< from home
        bool refused = false;                  ///< it stays where it is
        pa_operation* moving = nullptr;
    };
    enum class State { loading, there, none };
    /// A sink that the server was asked to make. Ends with the operation, so that one that is made too late
    /// is unloaded again.
    struct Load {
        explicit Load(PulseTapSink* sink) : owner(sink) {}
        PulseTapSink* owner; ///< none: nobody wants it any more
    };

    PulseTapSink(PulseServer& server, std::function<void()> changed);
    void connected(AudioDirection direction) override;
    void tick() override {}
    bool settled() const override { return state_ != State::loading; }

    void beginLoading(pa_context* context);
    void loaded(std::uint32_t module);
    void find();
    void found(const pa_sink_info* sink);
    void moved(Parked& parked, bool accepted);
    void forgetAll();
    void abandonLoad();
    void isKnown(bool known);
    /// As long as the server has time to answer; without its lock.
    void waitUntilKnown();
    void discard();

    PulseServer& server_;
    std::function<void()> changed_;
    State state_ = State::loading;
    std::uint32_t index_ = PA_INVALID_INDEX;
    std::uint32_t module_ = PA_INVALID_INDEX; ///< that we have loaded
    Load* load_ = nullptr;
    pa_operation* finding_ = nullptr;
    std::map<std::uint32_t, Parked> parked_; ///< by player; kept when home, for the list may be late

    std::mutex knownMutex_; ///< of what follows
    std::condition_variable knownChanged_;
    bool known_ = false; ///< the server has said whether the sink is there
};

} // namespace velto
