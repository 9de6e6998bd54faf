// Many reasons to look again, one look.
#pragma once

#include <QTimer>

#include <functional>
#include <utility>

namespace velto {

/// Main thread. Does nothing more once it is destroyed.
class OnceATurn {
  public:
    explicit OnceATurn(std::function<void()> look) {
        timer_.setSingleShot(true);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, std::move(look));
    }

    /// Looks in the next turn of the event loop, however often it is asked until then.
    void ask() {
        if (!timer_.isActive())
            timer_.start(0);
    }

  private:
    QTimer timer_;
};

} // namespace velto
