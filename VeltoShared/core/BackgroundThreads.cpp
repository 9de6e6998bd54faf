#include "VeltoShared/core/BackgroundThreads.h"

#include "VeltoShared/core/Executors.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/thread_pool.hpp>

#include <thread>

namespace velto {
namespace {

/// A keyring's question, a hang-up and a check of keys can wait side by side.
constexpr std::size_t kBlockingThreads = 4;

} // namespace

struct BackgroundThreads::Impl {
    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> guard = asio::make_work_guard(context);
    std::thread thread{[this] { context.run(); }};
    asio::thread_pool blocking{kBlockingThreads};
};

BackgroundThreads::BackgroundThreads() : impl_(std::make_unique<Impl>()) {
    Background::install(impl_->context.get_executor());
    Blocking::install(impl_->blocking.get_executor());
}

BackgroundThreads::~BackgroundThreads() {
    impl_->blocking.stop();
    impl_->blocking.join();
    impl_->context.stop();
    impl_->thread.join();
    Background::install({});
    Blocking::install({});
}

} // namespace velto
