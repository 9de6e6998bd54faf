// The running phone: its call, its windows and how long it lives.
#pragma once

#include "VeltoPhone/app/SingleInstance.h"
#include "VeltoPhone/views/Banner.h"
#include "VeltoPhone/views/MainWindow.h"

#include <memory>

namespace velto::phone {

/// Ends the application, after `ending`, when no call is up and nothing is visible. Qt's main thread.
/// One for each process: a call is hung up also when the process ends by `exit`, as Qt does when its display
/// dies.
class PhoneProgram : public QObject {
    Q_OBJECT

  public:
    explicit PhoneProgram(std::unique_ptr<Line> line);
    ~PhoneProgram() override;

    void grant(const Wish& wish);
    /// Hangs up first where there is a call; asked a second time it does not wait for the line.
    void stop();

  Q_SIGNALS:
    /// Nothing is granted from here on.
    void ending();

  private:
    void showWindow();
    void endIfDone();
    void end();

    Phone phone_;
    Banner banner_;
    std::unique_ptr<MainWindow> window_; ///< from the first time that somebody wants it
    bool stopping_ = false;
};

} // namespace velto::phone
