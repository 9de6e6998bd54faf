// Where work runs: the main thread (all state of the application), the background thread (network and the
// agent's loops) and threads that may block. A program's composition root or a test installs them before
// anything uses them.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <utility>

namespace velto {

namespace asio = boost::asio;

/// One process-wide slot for an executor. Installing is not synchronised: do it before threads start.
template <class Tag>
class ExecutorSlot {
  public:
    static void install(asio::any_io_executor executor) { slot() = std::move(executor); }
    static asio::any_io_executor executor() { return slot(); }

    /// Runs `work` later on this executor, never inside the call. Any thread.
    template <class Work>
    static void post(Work&& work) {
        asio::post(slot(), std::forward<Work>(work));
    }

    /// Starts a coroutine on this executor; an exception that escapes it ends the process. Any thread.
    static void spawn(asio::awaitable<void> task) {
        asio::co_spawn(slot(), std::move(task), [](const std::exception_ptr& error) {
            if (error)
                std::rethrow_exception(error);
        });
    }

    /// Runs a coroutine on this executor and resumes where it was awaited; straight away if that is the same.
    /// On another executor it is not cancelled, and a cancelled caller waits for its end: the signal by which
    /// Asio would tell it may be gone before it gets there.
    template <class T>
    static asio::awaitable<T> run(asio::awaitable<T> task) {
        const asio::any_io_executor here = co_await asio::this_coro::executor;
        const asio::any_io_executor there = executor();
        if (here == there)
            co_return co_await std::move(task);
        co_return co_await asio::co_spawn(
            there, std::move(task),
            asio::bind_cancellation_slot(asio::cancellation_slot(), asio::use_awaitable));
    }

  private:
    static asio::any_io_executor& slot() {
        static asio::any_io_executor executor;
        return executor;
    }
};

/// The one thread that owns the session, the state objects, the control server's commands and the views.
using MainThread = ExecutorSlot<struct MainThreadTag>;

/// The thread of the voice clients, the agent's loops and the control socket's reading. One thread, so that
/// a chunk travels from the capture queue to the socket without a hop.
using Background = ExecutorSlot<struct BackgroundTag>;

/// Threads that may wait for other programs, such as a keyring that asks its user. What is posted runs in no
/// order.
using Blocking = ExecutorSlot<struct BlockingTag>;

} // namespace velto
