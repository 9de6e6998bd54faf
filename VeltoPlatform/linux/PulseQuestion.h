// Operations that the sound server was asked for and that somebody waits for.
#pragma once

#include <pulse/operation.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace velto {

/// Begun and ended under the server's lock (`PulseServer::Lock`); what has not been answered by then is
/// cancelled, so that its callbacks do not come any more.
class PulseQuestion {
  public:
    /// Takes the operations over; one that could not be begun is null and counts as not answered.
    explicit PulseQuestion(std::vector<pa_operation*> operations);
    ~PulseQuestion();
    PulseQuestion(const PulseQuestion&) = delete;
    PulseQuestion& operator=(const PulseQuestion&) = delete;

    /// Not under the lock. True when it is over: all are answered, or cancelled because the server went away.
    bool waitUntil(std::chrono::steady_clock::time_point until);
    /// Whether there was something to ask and all of it has been answered. What the callbacks wrote may then
    /// be read. Any thread.
    bool answered() const;

  private:
    static void changed(pa_operation* operation, void* self);

    const std::vector<pa_operation*> operations_;
    mutable std::mutex mutex_; ///< of what follows
    std::condition_variable ended_;
    std::size_t open_ = 0;
    bool lacksAnswer_ = false;
};

} // namespace velto
