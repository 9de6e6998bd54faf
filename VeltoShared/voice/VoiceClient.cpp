// Connecting, sending, receiving and closing, for every provider alike.
#include "VeltoShared/voice/VoiceClient.h"

#include "VeltoShared/core/Executors.h"
#include "VeltoShared/voice/SecretBlot.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>

#include <atomic>
#include <optional>

namespace velto {
namespace {

constexpr std::size_t kWaitingAudio = 8;

/// Enough for people; a server may send any amount.
std::string shortened(std::string text) {
    constexpr std::size_t kLongest = 2000;
    if (text.size() <= kLongest)
        return text;
    std::size_t end = kLongest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end) + "…";
}

/// A flag, for as long as it lives.
class Raised {
  public:
    explicit Raised(bool& flag) : flag_(flag) { flag_ = true; }
    ~Raised() { flag_ = false; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

  private:
    bool& flag_;
};

} // namespace

/// All but `events` and `isReady` belongs to `Background`.
struct VoiceClient::State {
    State(std::unique_ptr<ProviderMessages> theirs, std::string_view hidden, VoiceSocket::Limits limited)
        : messages(std::move(theirs)), secret(hidden), limits(limited) {}

    static asio::awaitable<Result<>> connect(std::shared_ptr<State> state);
    asio::awaitable<Result<>> openAndConfigure(VoiceSocket& fresh);
    static asio::awaitable<void> receive(std::weak_ptr<State> weak, std::shared_ptr<VoiceSocket> socket);
    static asio::awaitable<void> sendAudio(std::shared_ptr<State> state, std::span<const std::byte> pcm);
    static asio::awaitable<void> sendAll(std::shared_ptr<State> state, std::vector<std::string> texts);
    static asio::awaitable<void> close(std::shared_ptr<State> state);
    void abandon();
    void deliver(std::span<VoiceEvent> received);
    /// For the log: the secret first, lest half of it be left by the cut.
    std::string described(std::string text) const { return shortened(secret.blotted(std::move(text))); }

    const std::unique_ptr<ProviderMessages> messages;
    const SecretBlot secret;
    const VoiceSocket::Limits limits;
    VoiceEvents events{kVoiceEventCapacity};
    std::atomic<bool> isReady = false;
    std::shared_ptr<VoiceSocket> socket;
    std::vector<std::shared_ptr<VoiceSocket>> replaced; ///< by a second `connect`; they go on delivering
    bool isWritingAudio = false;
    bool isClosed = false;
};

asio::awaitable<Result<>> VoiceClient::State::connect(std::shared_ptr<State> state) {
    if (state->isClosed)
        co_return Failure{kErrorNotConnected, "the session was closed"};
    const auto executor = Background::executor();
    const auto socket = VoiceSocket::make(executor, state->messages->request(), state->limits);
    if (state->socket)
        state->replaced.push_back(std::move(state->socket));
    state->socket = socket;
    Result<> connected;
    try {
        connected = co_await state->openAndConfigure(*socket);
    } catch (const boost::system::system_error&) {
        socket->abort();
        connected = Failure{kErrorNotConnected, "connecting was cancelled"};
    }
    if (!connected)
        co_return Failure{connected.error().code, state->described(connected.error().description)};
    asio::co_spawn(executor, receive(state, socket), asio::detached);
    co_return connected;
}

asio::awaitable<Result<>> VoiceClient::State::openAndConfigure(VoiceSocket& fresh) {
    auto done = co_await fresh.open();
    if (done)
        done = co_await fresh.send(messages->configuration());
    co_return done;
}

asio::awaitable<void> VoiceClient::State::receive(std::weak_ptr<State> weak,
                                                  std::shared_ptr<VoiceSocket> socket) {
    for (;;) {
        const auto message = co_await socket->receive();
        const auto state = weak.lock();
        if (!state || socket->isClosed())
            co_return;
        if (!message) {
            state->events.push(event::Closed{state->described(message.error().description)});
            co_return;
        }
        state->deliver(state->messages->handle(*message));
    }
}

void VoiceClient::State::deliver(std::span<VoiceEvent> received) {
    for (auto& each : received) {
        if (std::holds_alternative<event::SetupComplete>(each))
            isReady = true;
        else if (auto* closed = std::get_if<event::Closed>(&each))
            closed->reason = described(std::move(closed->reason));
        events.push(std::move(each));
    }
}

asio::awaitable<void> VoiceClient::State::sendAudio(std::shared_ptr<State> state,
                                                    std::span<const std::byte> pcm) {
    const auto socket = state->socket;
    if (!socket)
        co_return;
    std::optional<VoiceSocket::Turn> mine(socket->tryTurn());
    if (!*mine) {
        auto waitedFor = co_await socket->turn(kWaitingAudio);
        mine.emplace(std::move(waitedFor));
    }
    // The message is built with the turn in hand, because its buffer is the one that is being written; a
    // connection that was replaced may still be writing it, too.
    if (!*mine || state->isWritingAudio)
        co_return;
    const Raised writing(state->isWritingAudio);
    co_await socket->write(state->messages->audio(pcm));
}

asio::awaitable<void> VoiceClient::State::sendAll(std::shared_ptr<State> state,
                                                  std::vector<std::string> texts) {
    for (auto& text : texts)
        if (const auto socket = state->socket)
            co_await socket->send(std::move(text));
}

asio::awaitable<void> VoiceClient::State::close(std::shared_ptr<State> state) {
    state->isClosed = true;
    if (const auto socket = std::move(state->socket))
        socket->close();
    state->socket.reset();
    for (const auto& socket : std::exchange(state->replaced, {}))
        socket->abort();
    state->events.push(event::Closed{"client closed"});
    state->events.finish();
    co_return;
}

void VoiceClient::State::abandon() {
    isClosed = true;
    if (const auto gone = std::move(socket))
        gone->abort();
    socket.reset();
    for (const auto& gone : std::exchange(replaced, {}))
        gone->abort();
}

VoiceClient::VoiceClient(std::unique_ptr<ProviderMessages> messages, std::string_view secret,
                         VoiceSocket::Limits limits)
    : state_(std::make_shared<State>(std::move(messages), secret, limits)) {}

VoiceClient::~VoiceClient() {
    // Without a background thread no connection is left either.
    if (const auto background = Background::executor())
        asio::post(background, [state = std::move(state_)] { state->abandon(); });
}

VoiceEvents& VoiceClient::events() {
    return state_->events;
}

bool VoiceClient::isReady() const {
    return state_->isReady;
}

asio::awaitable<Result<>> VoiceClient::connect() {
    return Background::run(State::connect(state_));
}

asio::awaitable<void> VoiceClient::sendAudio(std::span<const std::byte> pcm) {
    return Background::run(State::sendAudio(state_, pcm));
}

asio::awaitable<void> VoiceClient::sendClientText(std::string text) {
    return Background::run(State::sendAll(state_, state_->messages->clientText(text)));
}

asio::awaitable<void> VoiceClient::sendToolResponse(std::string id, std::string name,
                                                    std::string resultJSON) {
    return Background::run(State::sendAll(state_, state_->messages->toolResponse(id, name, resultJSON)));
}

asio::awaitable<void> VoiceClient::close() {
    return Background::run(State::close(state_));
}

} // namespace velto
