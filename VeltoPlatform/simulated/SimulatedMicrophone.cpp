#include "VeltoPlatform/simulated/SimulatedMicrophone.h"

#include <utility>

namespace velto {

void SimulatedMicrophone::set(MicrophoneAuthorization authorization, std::string reason) {
    const std::lock_guard guard(mutex_);
    status_ = {authorization, std::move(reason)};
}

void SimulatedMicrophone::answer(MicrophoneAuthorization authorization, std::string reason) {
    set(authorization, std::move(reason));
    std::vector<std::function<void()>> requests;
    {
        const std::lock_guard guard(mutex_);
        requests = std::exchange(requests_, {});
    }
    for (const auto& answered : requests)
        answered();
}

MicrophoneStatus SimulatedMicrophone::status() {
    const std::lock_guard guard(mutex_);
    return status_;
}

void SimulatedMicrophone::request(std::function<void()> answered) {
    const std::lock_guard guard(mutex_);
    requests_.push_back(std::move(answered));
}

} // namespace velto
