// The connection to the sound server: its thread, its two contexts, questions with a time limit, its return.
#pragma once

#include "VeltoPlatform/AudioHardware.h"

#include <pulse/context.h>
#include <pulse/operation.h>
#include <pulse/thread-mainloop.h>

#include <array>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace velto {

/// What lives on the connection. Called on the sound thread, under its lock.
class PulseListener {
  public:
    virtual ~PulseListener() = default;
    virtual void connected(AudioDirection direction) = 0;
    /// About eight times a second.
    virtual void tick() = 0;
    /// Whether it has found its device again, or has given up for the moment.
    virtual bool settled() const = 0;
};

/// Speaks to PulseAudio or to pipewire-pulse. One context a direction: over a common one pipewire-pulse
/// delivers capture in bursts. A lost server is sought for as long as this lives, every 250 ms while anything
/// is on it, else at each question and less and less often, every 4 s at last; its units and hardware
/// share its ownership. Nobody waits for the server longer than `answerLimit`; once it has left a question
/// unanswered, further ones fail at once until it answers again.
class PulseServer {
  public:
    using Log = std::function<void(const std::string&)>;
    static constexpr std::chrono::milliseconds answerLimit{700};
    /// How the server's other clients see this program.
    static constexpr const char* clientName = "Velto";

    /// `log` is told, on any thread and in one line each, why sound is silent and when it is back; it must
    /// not ask the server anything. `address` as in PULSE_SERVER; "" is the user's server.
    explicit PulseServer(Log log = {}, std::string address = {});
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    /// Holds the sound thread still; nothing on that thread itself.
    class Lock {
      public:
        explicit Lock(const PulseServer& server);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

      private:
        pa_threaded_mainloop* loop_;
    };

    /// Starts operations under the lock and waits until all have ended; true when all were answered. What
    /// their callbacks write may be read afterwards either way. Always false on the sound thread.
    bool ask(const std::function<std::vector<pa_operation*>(pa_context*)>& begin);

    /// As `AudioHardware::observeReturn`; called on the sound thread.
    void observeReturn(std::function<void()> returned);

    // Under the lock:
    /// None while the server is away.
    pa_context* context(AudioDirection direction) const;
    /// Why it is away, as libpulse's error; PA_OK while it is there, or its first answer is awaited.
    int trouble() const { return trouble_; }
    pa_mainloop_api& loop() const { return *pa_threaded_mainloop_get_api(loop_); }
    /// Begins a further connection, which is the caller's own; its state callback may be set afterwards.
    pa_context* connect() const;
    void add(PulseListener& listener);
    void remove(PulseListener& listener);
    void log(const std::string& line) const;

  private:
    struct Connection {
        PulseServer* server = nullptr;
        AudioDirection direction = AudioDirection::output;
        pa_context* context = nullptr;
        bool ready = false;
        bool failed = false;
        pa_usec_t since = 0; ///< when it was tried or when it failed
    };
    enum class State { connecting, ready, lost };

    void connect(Connection& connection);
    void drop(Connection& connection);
    void changed(Connection& connection);
    void failed(Connection& connection);
    void becameReady();
    void publish(State state);
    bool waitUntilReady(std::chrono::steady_clock::time_point until);
    void leftUnanswered();
    pa_usec_t dueAt(const Connection& connection) const;
    void tick();
    void schedule();
    bool seekNow();
    void tellReturn();

    Log log_;
    std::string address_;
    pa_threaded_mainloop* loop_;
    std::array<Connection, 2> connections_;
    pa_time_event* timer_ = nullptr;
    std::vector<PulseListener*> listeners_;
    std::function<void()> returned_;
    int trouble_ = PA_OK;
    pa_usec_t lostAt_ = 0;   ///< 0 while it is there
    pa_usec_t returnAt_ = 0; ///< 0 when the observer has been told
    pa_usec_t retry_ = 0;    ///< how long a failed connection waits; 0 is the shortest
    bool everReady_ = false;

    std::mutex stateMutex_;
    std::condition_variable stateChanged_;
    State state_ = State::connecting;
    bool unanswering_ = false;
};

} // namespace velto
