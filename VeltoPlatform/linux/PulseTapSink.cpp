#include "VeltoPlatform/linux/PulseTapSink.h"

#include <pulse/error.h>

#include <unistd.h>

#include <algorithm>
#include <ranges>
#include <string>
#include <utility>

namespace velto {
namespace {

const std::string name(PulseTapSink::serverName);

void forget(pa_operation*& operation) {
    if (operation == nullptr)
        return;
    pa_operation_cancel(operation);
    pa_operation_unref(operation);
    operation = nullptr;
}

/// Begun and left alone.
void begin(pa_operation* operation) {
    if (operation != nullptr)
        pa_operation_unref(operation);
}

std::vector<pa_operation*> answerOnly(pa_context* context) {
    return {pa_context_get_server_info(
        context, [](pa_context*, const pa_server_info*, void*) {}, nullptr)};
}

} // namespace

bool PulseTapSink::isOne(const pa_sink_info& sink) {
    return pa_proplist_contains(sink.proplist, ownerProperty) > 0;
}

bool PulseTapSink::isOurs(const pa_sink_info& sink) {
    const char* owner = pa_proplist_gets(sink.proplist, ownerProperty);
    return owner != nullptr && std::to_string(::getpid()) == owner;
}

std::unique_ptr<PulseTapSink> PulseTapSink::load(PulseServer& server, std::function<void()> changed) {
    std::unique_ptr<PulseTapSink> sink(new PulseTapSink(server, std::move(changed)));
    const bool answers = server.ask([&](pa_context* context) {
        sink->beginLoading(context);
        return answerOnly(context);
    });
    if (answers)
        sink->waitUntilKnown();
    {
        PulseServer::Lock lock(server);
        if (sink->state_ == State::there)
            return sink;
    }
    sink->discard();
    return nullptr;
}

PulseTapSink::PulseTapSink(PulseServer& server, std::function<void()> changed)
    : server_(server), changed_(std::move(changed)) {
    PulseServer::Lock lock(server_);
    server_.add(*this);
}

PulseTapSink::~PulseTapSink() {
    PulseServer::Lock lock(server_);
    server_.remove(*this);
    forgetAll();
}

void PulseTapSink::forgetAll() {
    abandonLoad();
    forget(finding_);
    for (auto& parked : std::views::values(parked_))
        forget(parked.moving);
    parked_.clear();
    index_ = PA_INVALID_INDEX;
    module_ = PA_INVALID_INDEX;
}

void PulseTapSink::connected(AudioDirection direction) {
    if (direction != AudioDirection::output)
        return;
    forgetAll();
    state_ = State::loading;
    isKnown(false);
    beginLoading(server_.context(AudioDirection::output));
}

void PulseTapSink::beginLoading(pa_context* context) {
    // norewinds: otherwise PulseAudio plays up to two seconds ahead there.
    const auto arguments = "sink_name=" + name +
                           " rate=48000 channels=2 norewinds=1 sink_properties='device.description=\"Velto "
                           "tap\" " +
                           ownerProperty + "=" + std::to_string(::getpid()) + "'";
    auto load = std::make_unique<Load>(this);
    auto* const loading = pa_context_load_module(
        context, "module-null-sink", arguments.c_str(),
        [](pa_context* asked, std::uint32_t module, void* data) {
            if (auto* const owner = static_cast<Load*>(data)->owner)
                owner->loaded(module);
            else if (module != PA_INVALID_INDEX)
                begin(pa_context_unload_module(asked, module, nullptr, nullptr));
        },
        load.get());
    if (loading == nullptr)
        return;
    load_ = load.release();
    // The last word on an operation, be it answered or lost with its connection.
    pa_operation_set_state_callback(
        loading,
        [](pa_operation*, void* data) {
            const std::unique_ptr<Load> over(static_cast<Load*>(data));
            if (over->owner != nullptr)
                over->owner->load_ = nullptr;
        },
        load_);
    begin(loading);
}

void PulseTapSink::abandonLoad() {
    if (load_ != nullptr)
        std::exchange(load_, nullptr)->owner = nullptr;
}

void PulseTapSink::loaded(std::uint32_t module) {
    module_ = module;
    find();
}

/// Whether or not the module could be loaded: after a lost connection the sink may still be there.
void PulseTapSink::find() {
    auto* context = server_.context(AudioDirection::output);
    forget(finding_);
    if (context == nullptr)
        return;
    finding_ = pa_context_get_sink_info_by_name(
        context, name.c_str(),
        [](pa_context*, const pa_sink_info* sink, int end, void* self) {
            if (end <= 0)
                static_cast<PulseTapSink*>(self)->found(end == 0 ? sink : nullptr);
        },
        this);
}

void PulseTapSink::found(const pa_sink_info* sink) {
    state_ = sink != nullptr && isOurs(*sink) ? State::there : State::none;
    if (state_ == State::there)
        index_ = sink->index;
    else
        server_.log("sound: tap: the tapped program cannot be muted");
    // The name was taken: there is one sink more than there should be.
    const auto wanted = state_ == State::there ? sink->owner_module : PA_INVALID_INDEX;
    if (const auto module = std::exchange(module_, wanted); module != wanted && module != PA_INVALID_INDEX)
        begin(pa_context_unload_module(server_.context(AudioDirection::output), module, nullptr, nullptr));
    isKnown(true);
    changed_();
}

void PulseTapSink::isKnown(bool known) {
    const std::lock_guard guard(knownMutex_);
    known_ = known;
    knownChanged_.notify_all();
}

void PulseTapSink::waitUntilKnown() {
    std::unique_lock guard(knownMutex_);
    knownChanged_.wait_for(guard, PulseServer::answerLimit, [this] { return known_; });
}

void PulseTapSink::park(const PulsePlayers::Players& players) {
    auto* context = server_.context(AudioDirection::output);
    for (auto entry = parked_.begin(); entry != parked_.end();) {
        const auto here = entry++;
        if (std::ranges::find(players, here->first, &PulsePlayer::index) != players.end())
            continue;
        forget(here->second.moving);
        parked_.erase(here);
    }
    if (context == nullptr || state_ != State::there)
        return;
    for (const auto& player : players) {
        auto& parked = parked_[player.index];
        if (parked.away)
            continue;
        parked.self = this;
        parked.away = true;
        if (player.sink != index_)
            parked.home = player.sink;
        parked.moving = pa_context_move_sink_input_by_index(
            context, player.index, index_,
            [](pa_context*, int success, void* data) {
                auto& one = *static_cast<Parked*>(data);
                one.self->moved(one, success != 0);
            },
            &parked);
    }
}

void PulseTapSink::moved(Parked& parked, bool accepted) {
    const bool gone = pa_context_errno(server_.context(AudioDirection::output)) == PA_ERR_NOENTITY;
    pa_operation_unref(std::exchange(parked.moving, nullptr));
    const bool known = std::exchange(parked.refused, !accepted);
    if (!accepted && !gone && !known)
        server_.log("sound: tap: a stream of the tapped program cannot be muted");
    changed_();
}

void PulseTapSink::bringHome() {
    auto* context = server_.context(AudioDirection::output);
    for (auto& [player, parked] : parked_) {
        forget(parked.moving);
        const bool wasAway = std::exchange(parked.away, false);
        if (context == nullptr || !wasAway || parked.refused)
            continue;
        // Two moves in one go: the second fails where the stream's own sink has been unplugged.
        begin(pa_context_move_sink_input_by_name(context, player, "@DEFAULT_SINK@", nullptr, nullptr));
        if (parked.home != PA_INVALID_INDEX)
            begin(pa_context_move_sink_input_by_index(context, player, parked.home, nullptr, nullptr));
    }
}

void PulseTapSink::unload() {
    waitUntilKnown();
    discard();
}

void PulseTapSink::discard() {
    std::uint32_t module = PA_INVALID_INDEX;
    {
        PulseServer::Lock lock(server_);
        abandonLoad();
        module = std::exchange(module_, PA_INVALID_INDEX);
        state_ = State::none;
    }
    if (module == PA_INVALID_INDEX)
        return;
    bool asked = false;
    server_.ask([&](pa_context* context) {
        asked = true;
        return std::vector<pa_operation*>{pa_context_unload_module(
            context, module, [](pa_context*, int, void*) {}, nullptr)};
    });
    if (asked)
        return;
    // One that does not answer for the moment does it when it comes to itself.
    PulseServer::Lock lock(server_);
    if (auto* const context = server_.context(AudioDirection::output))
        begin(pa_context_unload_module(context, module, nullptr, nullptr));
}

bool PulseTapSink::isSettled(std::uint32_t player) const {
    const auto found = parked_.find(player);
    return state_ == State::none || (state_ == State::there && found != parked_.end() && found->second.away &&
                                     found->second.moving == nullptr);
}

} // namespace velto
