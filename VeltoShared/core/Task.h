// A coroutine running on an executor, with a handle that cancels it from any thread.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/post.hpp>

#include <exception>
#include <memory>
#include <utility>

namespace velto {

namespace asio = boost::asio;

/// Dropping the handle lets the coroutine run on. A cancelled coroutine sees it in its cancellation state;
/// one that has not switched `throw_if_cancelled` off ends at its next suspension. Any other exception that
/// escapes it ends the process.
class Task {
  public:
    Task() = default;

    static Task start(const asio::any_io_executor& executor, asio::awaitable<void> work) {
        Task task;
        task.state_ = std::make_shared<State>(executor);
        asio::co_spawn(executor, std::move(work),
                       asio::bind_cancellation_slot(task.state_->signal.slot(),
                                                    [state = task.state_](const std::exception_ptr& error) {
                                                        if (error)
                                                            rethrowUnlessCancelled(error);
                                                    }));
        return task;
    }

    explicit operator bool() const { return state_ != nullptr; }

    /// Asks the coroutine to end and lets go of it.
    void cancel() {
        if (auto state = std::exchange(state_, nullptr))
            asio::post(state->executor, [state] { state->signal.emit(asio::cancellation_type::terminal); });
    }

  private:
    struct State {
        explicit State(asio::any_io_executor where) : executor(std::move(where)) {}
        asio::any_io_executor executor;
        asio::cancellation_signal signal;
    };

    static void rethrowUnlessCancelled(const std::exception_ptr& error) {
        try {
            std::rethrow_exception(error);
        } catch (const boost::system::system_error& thrown) {
            if (thrown.code() != asio::error::operation_aborted)
                throw;
        }
    }

    std::shared_ptr<State> state_;
};

} // namespace velto
