#include "VeltoShared/core/BackgroundThread.h"

#include "VeltoShared/core/Executors.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <thread>

namespace velto {

struct BackgroundThread::Impl {
    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> guard = asio::make_work_guard(context);
    std::thread thread;
};

BackgroundThread::BackgroundThread() : impl_(std::make_unique<Impl>()) {
    Background::install(impl_->context.get_executor());
    impl_->thread = std::thread([impl = impl_.get()] { impl->context.run(); });
}

BackgroundThread::~BackgroundThread() {
    impl_->context.stop();
    impl_->thread.join();
    Background::install({});
}

} // namespace velto
