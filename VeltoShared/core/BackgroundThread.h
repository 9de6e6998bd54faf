// The thread behind `Background` in programs; tests install an executor of their own instead.
#pragma once

#include <memory>

namespace velto {

/// Starts one thread that runs an io_context, installs its executor as `Background`, and joins at the end.
class BackgroundThread {
  public:
    BackgroundThread();
    ~BackgroundThread();
    BackgroundThread(const BackgroundThread&) = delete;
    BackgroundThread& operator=(const BackgroundThread&) = delete;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace velto
