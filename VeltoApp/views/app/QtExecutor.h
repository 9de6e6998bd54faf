// Qt's main thread as an executor of Asio's, so that coroutines go on there.
#pragma once

#include <boost/asio/execution.hpp>
#include <boost/asio/execution_context.hpp>

#include <QEvent>
#include <QObject>

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace velto {

/// Receives the work on Qt's main thread, on which it is made and destroyed, before the application object is
/// and after every thread that posts has ended. Work that is left then is dropped.
class QtLoop : public boost::asio::execution_context {
  public:
    QtLoop() = default;
    ~QtLoop() { shutdown(); }
    QtLoop(const QtLoop&) = delete;
    QtLoop& operator=(const QtLoop&) = delete;

    /// Any thread.
    void post(std::unique_ptr<QEvent> work);

    template <class Function>
    static std::unique_ptr<QEvent> work(Function&& function);

  private:
    struct Work : QEvent {
        Work() : QEvent(User) {}
        virtual void run() = 0;
    };
    template <class Function>
    struct WorkOf final : Work {
        explicit WorkOf(Function&& moved) : function(std::move(moved)) {}
        explicit WorkOf(const Function& copied) : function(copied) {}
        void run() override { std::move(function)(); }
        Function function;
    };
    struct Receiver : QObject {
        bool event(QEvent* event) override;
    };

    Receiver receiver_;
};

template <class Function>
std::unique_ptr<QEvent> QtLoop::work(Function&& function) {
    return std::make_unique<WorkOf<std::decay_t<Function>>>(std::forward<Function>(function));
}

/// What is executed never runs inside the call. Copies are equal while they name one loop.
class QtExecutor {
  public:
    explicit QtExecutor(QtLoop& loop) noexcept : loop_(&loop) {}

    QtLoop& query(boost::asio::execution::context_t) const noexcept { return *loop_; }
    static constexpr auto query(boost::asio::execution::blocking_t) noexcept {
        return boost::asio::execution::blocking_t(boost::asio::execution::blocking.never);
    }
    QtExecutor require(boost::asio::execution::blocking_t::never_t) const noexcept { return *this; }
    QtExecutor require(boost::asio::execution::blocking_t::possibly_t) const noexcept { return *this; }

    template <class Function>
    void execute(Function&& function) const {
        loop_->post(QtLoop::work(std::forward<Function>(function)));
    }
    bool operator==(const QtExecutor&) const noexcept = default;

  private:
    QtLoop* loop_;
};

} // namespace velto
