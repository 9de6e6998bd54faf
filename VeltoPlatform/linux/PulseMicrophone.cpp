#include "VeltoPlatform/linux/PulseMicrophone.h"

#include "VeltoPlatform/linux/PulseQuestion.h"
#include "VeltoPlatform/linux/PulseServer.h"

#include <pulse/error.h>
#include <pulse/introspect.h>

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

/// Whether the server has a source that is no monitor.
struct PulseMicrophone::Look {
    explicit Look(pa_context* context)
        : question({pa_context_get_source_info_list(context, &Look::listed, this)}) {}

    static void listed(pa_context*, const pa_source_info* source, int end, void* self) {
        if (end == 0 && source->monitor_of_sink == PA_INVALID_INDEX)
            static_cast<Look*>(self)->hasSource = true;
    }

    bool hasSource = false; ///< read once it is answered
    PulseQuestion question;
};

PulseMicrophone::PulseMicrophone(std::shared_ptr<PulseServer> server) : server_(std::move(server)) {}

PulseMicrophone::~PulseMicrophone() {
    const PulseServer::Lock lock(*server_);
    look_.reset();
}

MicrophoneStatus PulseMicrophone::status() {
    using enum MicrophoneAuthorization;
    const std::lock_guard guard(mutex_);
    const auto asked = std::chrono::steady_clock::now();
    const bool isNew = !look_ || look_->question.waitUntil(asked);
    if (isNew) {
        const PulseServer::Lock lock(*server_);
        look_.reset();
        auto* const context = server_->context(AudioDirection::output);
        if (context == nullptr)
            return refused(server_->trouble());
        look_ = std::make_unique<Look>(context);
    }
    if (!look_->question.waitUntil(isNew ? asked + patience : asked) || !look_->question.answered())
        return {notDetermined, "the sound server does not answer"};
    if (!look_->hasSource)
        return {notDetermined, "the sound server has nothing to record from but monitors of outputs"};
    return {authorized, {}};
}

void PulseMicrophone::request(std::function<void()> answered) {
    answered(); // nobody to ask
}

} // namespace velto
