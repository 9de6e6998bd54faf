#include "VeltoPlatform/linux/PulsePlayers.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace velto {

pid_t processOf(pa_proplist* properties) {
    const char* text = pa_proplist_gets(properties, PA_PROP_APPLICATION_PROCESS_ID);
    if (text == nullptr)
        return 0;
    const std::string_view digits(text);
    pid_t value = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return read.ec == std::errc() && read.ptr == digits.data() + digits.size() ? value : 0;
}

PulsePlayers::PulsePlayers(PulseServer& server, std::function<void()> changed)
    : server_(server), changed_(std::move(changed)) {
    PulseServer::Lock lock(server_);
    server_.add(*this);
    subscribe();
}

PulsePlayers::~PulsePlayers() {
    PulseServer::Lock lock(server_);
    server_.remove(*this);
    forgetQuestion();
    if (auto* context = server_.context(AudioDirection::output)) {
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        if (auto* operation = pa_context_subscribe(context, PA_SUBSCRIPTION_MASK_NULL, nullptr, nullptr))
            pa_operation_unref(operation);
    }
}

void PulsePlayers::connected(AudioDirection direction) {
    if (direction == AudioDirection::output)
        subscribe();
}

void PulsePlayers::tick() {
    if (server_.context(AudioDirection::output) != nullptr)
        return;
    forgetQuestion();
    publish({});
}

void PulsePlayers::subscribe() {
    auto* context = server_.context(AudioDirection::output);
    if (context == nullptr)
        return;
    forgetQuestion();
    pa_context_set_subscribe_callback(
        context,
        [](pa_context*, pa_subscription_event_type_t, std::uint32_t, void* self) {
            static_cast<PulsePlayers*>(self)->ask();
        },
        this);
    if (auto* operation = pa_context_subscribe(context, PA_SUBSCRIPTION_MASK_SINK_INPUT, nullptr, nullptr))
        pa_operation_unref(operation);
    ask();
}

void PulsePlayers::ask() {
    auto* context = server_.context(AudioDirection::output);
    if (!operations_.empty()) {
        askAgain_ = true;
        return;
    }
    if (context == nullptr)
        return;
    clients_.clear();
    arriving_.clear();
    operations_ = {pa_context_get_client_info_list(
                       context,
                       [](pa_context*, const pa_client_info* client, int end, void* self) {
                           if (end == 0)
                               static_cast<PulsePlayers*>(self)->clients_[client->index] =
                                   processOf(client->proplist);
                       },
                       this),
                   pa_context_get_sink_input_info_list(
                       context,
                       [](pa_context*, const pa_sink_input_info* player, int end, void* self) {
                           if (end == 0)
                               static_cast<PulsePlayers*>(self)->add(*player);
                           else
                               static_cast<PulsePlayers*>(self)->answered(end > 0);
                       },
                       this)};
}

void PulsePlayers::add(const pa_sink_input_info& player) {
    auto pid = processOf(player.proplist);
    // Streams that do not come through libpulse are named by their client alone.
    if (const auto client = clients_.find(player.client); pid == 0 && client != clients_.end())
        pid = client->second;
    arriving_.push_back({player.index, player.sink, pid});
}

void PulsePlayers::answered(bool whole) {
    forgetQuestion();
    if (whole)
        publish(std::exchange(arriving_, {}));
    if (std::exchange(askAgain_, false))
        ask();
}

void PulsePlayers::forgetQuestion() {
    for (auto* operation : operations_) {
        if (operation == nullptr)
            continue;
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
    operations_.clear();
}

void PulsePlayers::publish(Players players) {
    if (players == list_)
        return;
    list_ = std::move(players);
    changed_();
}

} // namespace velto
