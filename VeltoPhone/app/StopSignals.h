// SIGTERM and its like as something that happens in Qt's loop.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace velto::phone {

/// Construct it before any thread starts, so that all of them leave the signals to this.
class StopSignals {
  public:
    StopSignals();

    /// `stop` is called on Qt's main thread for each signal, those of the past included.
    void watch(std::function<void()> stop);

  private:
    FileDescriptor signals_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace velto::phone
