// What shows polkit's dialogs on a desktop, with answers that a test scripts.
#pragma once

#include "VeltoPlatform/linux/Bus.h"

#include <sys/types.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace velto::test {

/// Answers for one process, as root, on a thread of its own.
class AuthenticationAgent {
  public:
    enum class Answer { rightPassword, wrongPassword, dismissed };

    /// `answers` in the order of the questions.
    AuthenticationAgent(pid_t process, uid_t user, std::deque<Answer> answers);
    ~AuthenticationAgent();
    AuthenticationAgent(const AuthenticationAgent&) = delete;
    AuthenticationAgent& operator=(const AuthenticationAgent&) = delete;

    bool registered() const { return registered_; }
    /// The actions that it was asked about.
    std::vector<std::string> asked();

  private:
    static int begin(sd_bus_message* message, void* data, sd_bus_error* error);
    int answer(sd_bus_message* message, sd_bus_error* error);
    bool registerFor(pid_t process, uid_t user);
    bool confirm(const char* cookie);

    std::unique_ptr<Bus> bus_;
    bool registered_ = false;
    std::mutex mutex_;
    std::deque<Answer> answers_;
    std::vector<std::string> asked_;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

} // namespace velto::test
