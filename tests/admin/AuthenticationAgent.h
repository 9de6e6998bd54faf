// What shows polkit's dialogs on a desktop, with answers that a test scripts.
#pragma once

#include "VeltoPlatform/linux/Bus.h"

#include <sys/types.h>

#include <deque>
#include <string>
#include <vector>

namespace velto::test {

/// Answers for one process, as root. One thread.
class AuthenticationAgent {
  public:
    enum class Answer { rightPassword, wrongPassword, dismissed };

    /// `answers` in the order of the questions.
    AuthenticationAgent(pid_t process, std::deque<Answer> answers);

    bool registered() const { return registered_; }
    /// Answers what it is asked within 5 ms.
    void process() { bus_->process(std::chrono::milliseconds(5)); }
    /// The actions that it was asked about.
    const std::vector<std::string>& asked() const { return asked_; }

  private:
    static int received(sd_bus_message* message, void* self, sd_bus_error* error);
    int answer(sd_bus_message* message, sd_bus_error* error);

    std::unique_ptr<Bus> bus_;
    bool registered_ = false;
    std::deque<Answer> answers_;
    std::vector<std::string> asked_;
};

} // namespace velto::test
