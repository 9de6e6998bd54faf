#include "VeltoPlatform/linux/PulseServer.h"

#include "VeltoPlatform/linux/PulseQuestion.h"

#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/rtclock.h>
#include <pulse/timeval.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

namespace velto {
namespace {

constexpr pa_usec_t tickPeriod = 125 * PA_USEC_PER_MSEC;
constexpr pa_usec_t retryPeriod = 250 * PA_USEC_PER_MSEC;
/// With nothing open and nobody asking.
constexpr pa_usec_t longestRetry = 4 * PA_USEC_PER_SEC;
/// A server that accepts the connection and then says nothing is tried afresh.
constexpr pa_usec_t connectLimit = 2 * PA_USEC_PER_SEC;
/// How long the observer of the return waits for units to find their devices again.
constexpr pa_usec_t settleLimit = PA_USEC_PER_SEC;

} // namespace

PulseServer::Lock::Lock(const PulseServer& server)
    : loop_(pa_threaded_mainloop_in_thread(server.loop_) != 0 ? nullptr : server.loop_) {
    if (loop_ != nullptr)
        pa_threaded_mainloop_lock(loop_);
}

PulseServer::Lock::~Lock() {
    if (loop_ != nullptr)
        pa_threaded_mainloop_unlock(loop_);
}

PulseServer::PulseServer(Log log, std::string address)
    : log_(std::move(log)), address_(std::move(address)), loop_(pa_threaded_mainloop_new()) {
    pa_threaded_mainloop_set_name(loop_, "velto-sound");
    connections_[0] = {this, AudioDirection::output};
    connections_[1] = {this, AudioDirection::input};
    for (auto& connection : connections_)
        connect(connection);
    timer_ = pa_context_rttime_new(
        connections_[0].context, PA_USEC_INVALID,
        [](pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
            static_cast<PulseServer*>(self)->tick();
        },
        this);
    schedule();
    pa_threaded_mainloop_start(loop_);
}

PulseServer::~PulseServer() {
    pa_threaded_mainloop_stop(loop_);
    pa_threaded_mainloop_get_api(loop_)->time_free(timer_);
    for (auto& connection : connections_)
        drop(connection);
    pa_threaded_mainloop_free(loop_);
}

void PulseServer::connect(Connection& connection) {
    drop(connection);
    connection.context = connect();
    connection.failed = false;
    connection.since = pa_rtclock_now();
    pa_context_set_state_callback(
        connection.context,
        [](pa_context*, void* data) {
            auto* changedOne = static_cast<Connection*>(data);
            changedOne->server->changed(*changedOne);
        },
        &connection);
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(connection.context)))
        failed(connection);
}

pa_context* PulseServer::connect() const {
    auto* context = pa_context_new(pa_threaded_mainloop_get_api(loop_), clientName);
    pa_context_connect(context, address_.empty() ? nullptr : address_.c_str(), PA_CONTEXT_NOAUTOSPAWN,
                       nullptr);
    return context;
}

void PulseServer::drop(Connection& connection) {
    if (connection.context == nullptr)
        return;
    pa_context_set_state_callback(connection.context, nullptr, nullptr);
    pa_context_disconnect(connection.context);
    pa_context_unref(connection.context);
    connection.context = nullptr;
    connection.ready = false;
}

void PulseServer::changed(Connection& connection) {
    const auto state = pa_context_get_state(connection.context);
    if (PA_CONTEXT_IS_GOOD(state)) {
        if (state != PA_CONTEXT_READY)
            return;
        connection.ready = true;
        for (auto* listener : listeners_)
            listener->connected(connection.direction);
        if (std::ranges::all_of(connections_, &Connection::ready))
            becameReady();
    } else {
        failed(connection);
    }
}

void PulseServer::failed(Connection& connection) {
    if (connection.failed)
        return;
    connection.failed = true;
    connection.ready = false;
    connection.since = pa_rtclock_now();
    trouble_ = pa_context_errno(connection.context);
    if (trouble_ == PA_OK) // it accepted the connection, and that was all
        trouble_ = PA_ERR_TIMEOUT;
    publish(State::lost);
    schedule();
    if (lostAt_ != 0)
        return;
    lostAt_ = connection.since;
    log(everReady_ ? "sound: server lost" : std::string("sound: no server: ") + pa_strerror(trouble_));
}

void PulseServer::becameReady() {
    everReady_ = true;
    trouble_ = PA_OK;
    // Before the news: whoever hears it may ask at once.
    publish(State::ready);
    if (lostAt_ != 0) {
        const auto away = static_cast<double>(pa_rtclock_now() - lostAt_) / PA_USEC_PER_SEC;
        std::array<char, 64> line{};
        std::snprintf(line.data(), line.size(), "sound: server back after %.1f s", away);
        log(line.data());
        lostAt_ = 0;
        returnAt_ = pa_rtclock_now();
    }
    retry_ = 0;
    schedule();
}

void PulseServer::publish(State state) {
    std::lock_guard guard(stateMutex_);
    state_ = state;
    if (state == State::ready)
        unanswering_ = false;
    stateChanged_.notify_all();
}

bool PulseServer::waitUntilReady(std::chrono::steady_clock::time_point until) {
    std::unique_lock guard(stateMutex_);
    if (unanswering_)
        return false;
    if (!stateChanged_.wait_until(guard, until, [this] { return state_ != State::connecting; }))
        unanswering_ = true;
    return state_ == State::ready;
}

bool PulseServer::ask(const std::function<std::vector<pa_operation*>(pa_context*)>& begin) {
    const auto until = std::chrono::steady_clock::now() + answerLimit;
    if (pa_threaded_mainloop_in_thread(loop_) != 0)
        return false;
    if (!waitUntilReady(until) && !(seekNow() && waitUntilReady(until)))
        return false;
    std::optional<PulseQuestion> question;
    {
        Lock lock(*this);
        auto* there = context(AudioDirection::output);
        if (there == nullptr)
            return false;
        question.emplace(begin(there));
    }
    const bool ended = question->waitUntil(until);
    Lock lock(*this);
    const bool answered = question->answered();
    question.reset();
    if (!ended)
        leftUnanswered();
    return answered;
}

void PulseServer::leftUnanswered() {
    auto* there = context(AudioDirection::output);
    if (there == nullptr)
        return;
    {
        std::lock_guard guard(stateMutex_);
        if (std::exchange(unanswering_, true)) // another one who asked at the same time has said so
            return;
    }
    log("sound: server does not answer");
    // Answered when the server has come to itself; a new connection forgets it.
    auto* probe = pa_context_get_server_info(
        there,
        [](pa_context*, const pa_server_info*, void* self) {
            auto* server = static_cast<PulseServer*>(self);
            server->log("sound: server answers again");
            std::lock_guard guard(server->stateMutex_);
            server->unanswering_ = false;
        },
        this);
    if (probe != nullptr)
        pa_operation_unref(probe);
}

pa_usec_t PulseServer::dueAt(const Connection& connection) const {
    return connection.since + (connection.failed ? std::max(retry_, retryPeriod) : connectLimit);
}

void PulseServer::tick() {
    const auto now = pa_rtclock_now();
    const auto isDue = [&](const Connection& each) { return !each.ready && now >= dueAt(each); };
    if (std::ranges::any_of(connections_, isDue)) {
        for (auto& connection : connections_) {
            if (!isDue(connection))
                continue;
            if (!connection.failed)
                failed(connection);
            connect(connection);
        }
        retry_ = listeners_.empty() ? std::min(2 * std::max(retry_, retryPeriod), longestRetry) : 0;
    }
    for (auto* listener : listeners_)
        listener->tick();
    if (returnAt_ != 0 && lostAt_ == 0 &&
        (std::ranges::all_of(listeners_, &PulseListener::settled) || now - returnAt_ > settleLimit))
        tellReturn();
    schedule();
}

/// The next tick, if there is anything to do in one: an idle program does not wake up.
void PulseServer::schedule() {
    if (timer_ == nullptr)
        return;
    auto at = PA_USEC_INVALID;
    if (!listeners_.empty() || (returnAt_ != 0 && lostAt_ == 0))
        at = pa_rtclock_now() + tickPeriod;
    else
        for (const auto& connection : connections_)
            if (!connection.ready)
                at = std::min(at, dueAt(connection));
    pa_context_rttime_restart(connections_[0].context, timer_, at);
}

/// For who asks while nothing is open and the next try may be far off; false when nothing was to be tried.
bool PulseServer::seekNow() {
    Lock lock(*this);
    if (!listeners_.empty() || std::ranges::none_of(connections_, &Connection::failed))
        return false;
    retry_ = 0;
    publish(State::connecting);
    for (auto& connection : connections_)
        if (connection.failed)
            connect(connection);
    schedule();
    return true;
}

void PulseServer::tellReturn() {
    returnAt_ = 0;
    if (returned_)
        returned_();
}

void PulseServer::observeReturn(std::function<void()> returned) {
    Lock lock(*this);
    returned_ = std::move(returned);
}

pa_context* PulseServer::context(AudioDirection direction) const {
    const auto& connection = connections_[direction == AudioDirection::output ? 0 : 1];
    return connection.ready ? connection.context : nullptr;
}

void PulseServer::add(PulseListener& listener) {
    listeners_.push_back(&listener);
    retry_ = 0;
    if (listeners_.size() == 1)
        schedule();
}

void PulseServer::remove(PulseListener& listener) {
    std::erase(listeners_, &listener);
}

void PulseServer::log(const std::string& line) const {
    if (log_)
        log_(line);
}

} // namespace velto
