#include "VeltoPlatform/linux/SecretPrompt.h"

namespace velto {
namespace {

using Clock = std::chrono::steady_clock;

/// In the place of the library's own, which hangs up.
int installed(sd_bus_message*, void*, sd_bus_error*) {
    return 0;
}

} // namespace

SecretPrompt::SecretPrompt(std::shared_ptr<Bus> bus, const std::string& service, const std::string& path)
    : bus_(std::move(bus)) {
    sd_bus_slot* slot = nullptr;
    if (sd_bus_match_signal_async(bus_->handle(), &slot, service.c_str(), path.c_str(),
                                  "org.freedesktop.Secret.Prompt", "Completed", completed, installed,
                                  this) >= 0)
        completion_.reset(slot);
    const auto leaving = "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                         "member='NameOwnerChanged',arg0='" +
                         service + "'";
    if (sd_bus_add_match_async(bus_->handle(), &slot, leaving.c_str(), serviceGone, installed, this) >= 0)
        departure_.reset(slot);
}

int SecretPrompt::completed(sd_bus_message* signal, void* self, sd_bus_error*) {
    int dismissed = 1;
    const bool granted = sd_bus_message_read(signal, "b", &dismissed) > 0 && dismissed == 0;
    static_cast<SecretPrompt*>(self)->state_ = granted ? State::granted : State::refused;
    return 0;
}

int SecretPrompt::serviceGone(sd_bus_message*, void* self, sd_bus_error*) {
    auto& state = static_cast<SecretPrompt*>(self)->state_;
    if (state == State::open)
        state = State::lost;
    return 0;
}

SecretPrompt::State SecretPrompt::await(Bus::Limit limit) {
    const auto deadline = Clock::now() + limit;
    bool more = true;
    while (state_ == State::open && bus_->alive() && (more || Clock::now() < deadline))
        more = bus_->process(std::chrono::duration_cast<Bus::Limit>(deadline - Clock::now()));
    return state_ == State::open && !bus_->alive() ? State::lost : state_;
}

} // namespace velto
