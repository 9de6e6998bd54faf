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

    /// `answers` in the order of the questions; dismissed after them.
    AuthenticationAgent(pid_t process, std::deque<Answer> answers)
        : bus_(Bus::open("unix:path=/run/dbus/system_bus_socket", kLimit)), answers_(std::move(answers)) {
        if (!bus_ || sd_bus_add_filter(bus_->handle(), nullptr, received, this) < 0)
            return;
        // polkit finds out itself when the process was started, and by whom.
        const auto request = authority("RegisterAuthenticationAgent");
        sd_bus_message_append(request.get(), "(sa{sv})ss", "unix-process", 3, "pid", "u",
                              static_cast<std::uint32_t>(process), "start-time", "t", std::uint64_t{0}, "uid",
                              "i", -1, "C", "/org/velto/TestAgent");
        registered_ = static_cast<bool>(bus_->call(request, kLimit));
    }

    bool registered() const { return registered_; }
    /// Answers what it is asked within 5 ms.
    void process() { bus_->process(std::chrono::milliseconds(5)); }
    /// The actions that it was asked about.
    const std::vector<std::string>& asked() const { return asked_; }

  private:
    static constexpr std::chrono::seconds kLimit{10};

    BusMessage authority(const char* member) {
        return bus_->method("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
                            "org.freedesktop.PolicyKit1.Authority", member);
    }
    static int received(sd_bus_message* message, void* self, sd_bus_error* error) {
        const bool ours = sd_bus_message_is_method_call(message, nullptr, "BeginAuthentication") > 0;
        return ours ? static_cast<AuthenticationAgent*>(self)->answer(message, error) : 0;
    }
    int answer(sd_bus_message* message, sd_bus_error* error) {
        const char* action = nullptr;
        const char* cookie = nullptr;
        sd_bus_message_read(message, "sss", &action, nullptr, nullptr);
        sd_bus_message_skip(message, "a{ss}");
        sd_bus_message_read(message, "s", &cookie);
        asked_.emplace_back(action);
        answers_.push_back(Answer::dismissed);
        const auto answer = answers_.front();
        answers_.pop_front();
        if (answer == Answer::dismissed)
            return sd_bus_error_set(error, "org.freedesktop.PolicyKit1.Error.Cancelled", "dismissed");
        if (answer == Answer::rightPassword) {
            // What polkit's own helper says to it; only root may.
            const auto confirm = authority("AuthenticationAgentResponse2");
            sd_bus_message_append(confirm.get(), "us(sa{sv})", 0U, cookie, "unix-user", 1, "uid", "u", 0U);
            bus_->call(confirm, kLimit);
        }
        return sd_bus_reply_method_return(message, "");
    }

    std::unique_ptr<Bus> bus_;
    bool registered_ = false;
    std::deque<Answer> answers_;
    std::vector<std::string> asked_;
};

} // namespace velto::test
