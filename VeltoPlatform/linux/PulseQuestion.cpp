#include "VeltoPlatform/linux/PulseQuestion.h"

#include <utility>

namespace velto {

PulseQuestion::PulseQuestion(std::vector<pa_operation*> operations) : operations_(std::move(operations)) {
    lacksAnswer_ = operations_.empty();
    for (auto* const operation : operations_) {
        if (operation == nullptr) {
            lacksAnswer_ = true;
            continue;
        }
        ++open_;
        pa_operation_set_state_callback(operation, &PulseQuestion::changed, this);
    }
}

PulseQuestion::~PulseQuestion() {
    for (auto* const operation : operations_) {
        if (operation == nullptr)
            continue;
        pa_operation_set_state_callback(operation, nullptr, nullptr);
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
}

void PulseQuestion::changed(pa_operation* operation, void* self) {
    const auto state = pa_operation_get_state(operation);
    if (state == PA_OPERATION_RUNNING)
        return;
    auto& question = *static_cast<PulseQuestion*>(self);
    const std::lock_guard guard(question.mutex_);
    question.lacksAnswer_ |= state != PA_OPERATION_DONE;
    --question.open_;
    question.ended_.notify_all();
}

bool PulseQuestion::waitUntil(std::chrono::steady_clock::time_point until) {
    std::unique_lock guard(mutex_);
    return ended_.wait_until(guard, until, [this] { return open_ == 0; });
}

bool PulseQuestion::answered() const {
    const std::lock_guard guard(mutex_);
    return open_ == 0 && !lacksAnswer_;
}

} // namespace velto
