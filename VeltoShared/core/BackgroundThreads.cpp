#include "VeltoShared/core/BackgroundThreads.h"

#include "VeltoShared/core/Executors.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <thread>

namespace velto {
namespace {

struct RunningContext {
    RunningContext() : thread([this] { context.run(); }) {}
    ~RunningContext() {
        context.stop();
        thread.join();
    }
    RunningContext(const RunningContext&) = delete;
    RunningContext& operator=(const RunningContext&) = delete;

    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> guard = asio::make_work_guard(context);
    std::thread thread;
};

} // namespace

struct BackgroundThreads::Impl {
    RunningContext background;
    RunningContext blocking;
};

BackgroundThreads::BackgroundThreads() : impl_(std::make_unique<Impl>()) {
    Background::install(impl_->background.context.get_executor());
    Blocking::install(impl_->blocking.context.get_executor());
}

BackgroundThreads::~BackgroundThreads() {
    impl_.reset();
    Background::install({});
    Blocking::install({});
}

} // namespace velto
