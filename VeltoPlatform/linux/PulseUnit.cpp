#include "VeltoPlatform/linux/PulseUnit.h"

#include "VeltoPlatform/linux/PulseCatalogue.h"
#include "VeltoPlatform/linux/PulseTaps.h"

#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/rtclock.h>
#include <pulse/timeval.h>

#include <algorithm>

namespace velto {
namespace {

constexpr pa_usec_t seekPeriod = 250 * PA_USEC_PER_MSEC;
constexpr pa_usec_t tickPeriod = PA_USEC_PER_SEC / 8;
constexpr pa_usec_t firstPatience = PA_USEC_PER_SEC;
constexpr pa_usec_t longestPatience = 4 * PA_USEC_PER_SEC;
/// A stream that has run for so long has earned the short patience again.
constexpr pa_usec_t steadyAfter = 5 * PA_USEC_PER_SEC;

} // namespace

PulseUnit::PulseUnit(std::shared_ptr<PulseServer> server, std::shared_ptr<PulseTaps> taps)
    : server_(std::move(server)), taps_(std::move(taps)) {}

PulseUnit::~PulseUnit() {
    stop();
}

AudioStatus PulseUnit::enableIO(UnitScope scope, std::uint32_t element, bool on) {
    if (scope == UnitScope::input && element == 1)
        direction_ = on ? AudioDirection::input : AudioDirection::output;
    return kAudioNoError;
}

AudioStatus PulseUnit::setCurrentDevice(AudioObjectID device) {
    tapDevice_ = taps_ && direction_ == AudioDirection::input ? taps_->device(device) : nullptr;
    if (tapDevice_)
        return kAudioNoError;
    const auto devices = PulseCatalogue::read(*server_);
    if (!devices)
        return kAudioUnready;
    const auto found = std::ranges::find(*devices, device, &PulseDevice::id);
    if (found == devices->end() || found->side(direction_).channels == 0)
        return kAudioUnready;
    serverName_ = found->side(direction_).serverName;
    description_ = found->name();
    return kAudioNoError;
}

AudioStatus PulseUnit::setStreamFormat(UnitScope, std::uint32_t, const StreamFormat& format) {
    format_ = format;
    return PulseStream::canCarry(format) ? kAudioNoError : kAudioUnready;
}

AudioStatus PulseUnit::setInputCallback(InputCallback callback, void* context) {
    callbacks_ = {callback, nullptr, context};
    return kAudioNoError;
}

AudioStatus PulseUnit::setRenderCallback(RenderCallback callback, void* context) {
    callbacks_ = {nullptr, callback, context};
    return kAudioNoError;
}

AudioStatus PulseUnit::initialize() {
    const bool hasCallback =
        direction_ == AudioDirection::input ? callbacks_.input != nullptr : callbacks_.render != nullptr;
    const bool hasDevice = tapDevice_ || !serverName_.empty();
    initialized_ = hasCallback && hasDevice && PulseStream::canCarry(format_);
    return initialized_ ? kAudioNoError : kAudioUnready;
}

AudioStatus PulseUnit::start() {
    if (!initialized_)
        return kAudioUnready;
    PulseServer::Lock lock(*server_);
    if (started_)
        return kAudioNoError;
    started_ = true;
    if (tapDevice_) {
        mix_ = std::make_unique<PulseMix>(*server_, tapDevice_, format_, callbacks_);
        return kAudioNoError;
    }
    silentBecause_.clear();
    patience_ = firstPatience;
    server_->add(*this);
    open();
    return kAudioNoError;
}

AudioStatus PulseUnit::stop() {
    PulseServer::Lock lock(*server_);
    if (!started_)
        return kAudioNoError;
    started_ = false;
    if (mix_) {
        mix_.reset();
        return kAudioNoError;
    }
    server_->remove(*this);
    close();
    return kAudioNoError;
}

AudioStatus PulseUnit::uninitialize() {
    stop();
    initialized_ = false;
    return kAudioNoError;
}

AudioStatus PulseUnit::render(const RenderContext&, std::uint32_t frames, AudioBufferList buffers) {
    if (mix_)
        return mix_->pull(frames, buffers);
    return stream_ ? stream_->pull(frames, buffers) : kAudioUnready;
}

void PulseUnit::connected(AudioDirection direction) {
    if (direction != direction_)
        return;
    close();
    patience_ = firstPatience;
    seek();
}

bool PulseUnit::settled() const {
    return !silentBecause_.empty() || (stream_ && stream_->state() == PulseStream::State::running);
}

void PulseUnit::tick() {
    if (server_->context(direction_) == nullptr)
        return;
    if (!stream_) {
        if (pa_rtclock_now() >= nextSeek_)
            seek();
        return;
    }
    if (stream_->state() == PulseStream::State::ended) {
        ended();
        return;
    }
    // Quiet is counted in ticks, not read off a clock: on a busy machine this thread itself may be late, and
    // then what the server has sent is dealt with before the next tick.
    quietTicks_ = stream_->quietFor() < tickPeriod ? 0 : quietTicks_ + 1;
    const auto quiet = quietTicks_ * tickPeriod;
    if (stream_->moved() && quiet < firstPatience / 2) {
        if (pa_rtclock_now() - openedAt_ > steadyAfter)
            patience_ = firstPatience;
        if (!silentBecause_.empty())
            server_->log("sound: device " + description_ + " is back");
        silentBecause_.clear();
        return;
    }
    // A server that does not even answer to the opening gets the longest wait.
    const bool opening = stream_->state() == PulseStream::State::opening;
    if (quiet < (opening ? longestPatience : patience_))
        return;
    silent("stands still");
    patience_ = std::min(2 * patience_, longestPatience);
    close();
    seek();
}

/// A device that has worked, or is missing, is looked for at once; one that was refused, after a while.
void PulseUnit::ended() {
    const auto error = pa_context_errno(server_->context(direction_));
    const bool again = stream_->moved() || error == PA_ERR_NOENTITY;
    close();
    if (again) {
        seek();
        return;
    }
    silent(std::string("cannot be opened: ") + pa_strerror(error));
    nextSeek_ = pa_rtclock_now() + patience_;
    patience_ = std::min(2 * patience_, longestPatience);
}

void PulseUnit::silent(const std::string& reason) {
    if (silentBecause_ == reason)
        return;
    silentBecause_ = reason;
    server_->log("sound: device " + description_ + ' ' + reason);
}

/// Looks for the device in the server's list, by its name there or else by its description, and opens it.
void PulseUnit::seek() {
    auto* context = server_->context(direction_);
    if (context == nullptr || search_ != nullptr)
        return;
    nextSeek_ = pa_rtclock_now() + seekPeriod;
    found_.reset();
    foundExactly_ = false;
    if (direction_ == AudioDirection::input)
        search_ = pa_context_get_source_info_list(
            context,
            [](pa_context*, const pa_source_info* source, int end, void* self) {
                if (end != 0)
                    static_cast<PulseUnit*>(self)->sought(nullptr, nullptr, true);
                else if (source->monitor_of_sink == PA_INVALID_INDEX)
                    static_cast<PulseUnit*>(self)->sought(source->name, source->description, false);
            },
            this);
    else
        search_ = pa_context_get_sink_info_list(
            context,
            [](pa_context*, const pa_sink_info* sink, int end, void* self) {
                if (end != 0)
                    static_cast<PulseUnit*>(self)->sought(nullptr, nullptr, true);
                else
                    static_cast<PulseUnit*>(self)->sought(sink->name, sink->description, false);
            },
            this);
}

void PulseUnit::sought(const char* serverName, const char* description, bool last) {
    if (!last) {
        if (serverName == nullptr || foundExactly_)
            return;
        foundExactly_ = serverName_ == serverName;
        if (foundExactly_ || (!found_ && description != nullptr && description_ == description))
            found_ = serverName;
        return;
    }
    pa_operation_unref(search_);
    search_ = nullptr;
    if (!found_) {
        silent("is gone");
        return;
    }
    serverName_ = *found_;
    open();
}

void PulseUnit::open() {
    quietTicks_ = 0;
    openedAt_ = pa_rtclock_now();
    if (auto* context = server_->context(direction_))
        stream_ = std::make_unique<PulseStream>(context, direction_, serverName_, format_, callbacks_);
}

void PulseUnit::close() {
    stream_.reset();
    if (search_ != nullptr) {
        pa_operation_cancel(search_);
        pa_operation_unref(search_);
        search_ = nullptr;
    }
}

} // namespace velto
