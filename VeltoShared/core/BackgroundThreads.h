// The threads behind `Background` and `Blocking` in programs; tests install an executor of their own instead.
#pragma once

#include <memory>

namespace velto {

/// Starts one thread for `Background` and a few for `Blocking`, and installs their executors. Joins them at
/// the end: what a blocking one is waiting for is waited for.
class BackgroundThreads {
  public:
    BackgroundThreads();
    ~BackgroundThreads();
    BackgroundThreads(const BackgroundThreads&) = delete;
    BackgroundThreads& operator=(const BackgroundThreads&) = delete;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace velto
