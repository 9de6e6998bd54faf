#include "VeltoPlatform/linux/PulseMicrophone.h"

#include "VeltoPlatform/linux/PulseServer.h"

#include <pulse/error.h>
#include <pulse/introspect.h>

#include <condition_variable>

namespace velto {
namespace {

MicrophoneStatus refused(int trouble) {
    using enum MicrophoneAuthorization;
    if (trouble == PA_ERR_ACCESS || trouble == PA_ERR_AUTHKEY)
        return {denied, "the sound server refuses access"};
    if (trouble == PA_OK)
        return {notDetermined, "the sound server has not answered yet"};
    return {notDetermined, std::string("no sound server: ") + pa_strerror(trouble)};
}

} // namespace

/// One question about the server's sources. Begun and ended under the server's lock.
struct PulseMicrophone::Question {
    explicit Question(pa_context* context)
        : operation(pa_context_get_source_info_list(context, &Question::listed, this)) {
        if (operation == nullptr)
            isOpen = false;
        else
            pa_operation_set_state_callback(operation, &Question::changed, this);
    }
    ~Question() {
        if (operation == nullptr)
            return;
        pa_operation_set_state_callback(operation, nullptr, nullptr);
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    static void listed(pa_context*, const pa_source_info* source, int end, void* self) {
        if (end == 0 && source->monitor_of_sink == PA_INVALID_INDEX)
            static_cast<Question*>(self)->hasSource = true;
    }
    /// Also told when the server goes away.
    static void changed(pa_operation* operation, void* self) {
        const auto state = pa_operation_get_state(operation);
        if (state == PA_OPERATION_RUNNING)
            return;
        auto& question = *static_cast<Question*>(self);
        const std::lock_guard guard(question.mutex);
        question.isOpen = false;
        question.isAnswered = state == PA_OPERATION_DONE;
        question.ended.notify_all();
    }

    /// True when it is over.
    bool wait(std::chrono::milliseconds limit) {
        std::unique_lock guard(mutex);
        return ended.wait_for(guard, limit, [this] { return !isOpen; });
    }

    bool hasSource = false; ///< read once it is over
    std::mutex mutex;       ///< of what follows
    std::condition_variable ended;
    bool isOpen = true;
    bool isAnswered = false;
    pa_operation* operation;
};

PulseMicrophone::PulseMicrophone(std::shared_ptr<PulseServer> server) : server_(std::move(server)) {}

PulseMicrophone::~PulseMicrophone() {
    const PulseServer::Lock lock(*server_);
    question_.reset();
}

MicrophoneStatus PulseMicrophone::status() {
    using enum MicrophoneAuthorization;
    const std::lock_guard guard(mutex_);
    const bool isNew = !question_ || question_->wait({});
    if (isNew) {
        const PulseServer::Lock lock(*server_);
        question_.reset();
        auto* const context = server_->context(AudioDirection::output);
        if (context == nullptr)
            return refused(server_->trouble());
        question_ = std::make_unique<Question>(context);
    }
    if (!question_->wait(isNew ? patience : std::chrono::milliseconds{}) || !question_->isAnswered)
        return {notDetermined, "the sound server does not answer"};
    if (!question_->hasSource)
        return {notDetermined, "the sound server has nothing to record from but monitors of outputs"};
    return {authorized, {}};
}

void PulseMicrophone::request(std::function<void()> answered) {
    answered(); // nobody to ask
}

} // namespace velto
