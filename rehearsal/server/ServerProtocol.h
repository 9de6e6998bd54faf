// One side of a voice provider's wire protocol: what its service takes and what it sends.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"
#include "rehearsal/server/ApiKeys.h"
#include "rehearsal/server/ClientMessage.h"
#include "rehearsal/server/HttpRequest.h"
#include "rehearsal/server/Violation.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velto::rehearsal {

/// One message to the client.
struct Outgoing {
    std::string text;
    bool binary = false; ///< as a binary frame instead of a text frame
};

/// Why a request for the upgrade is not granted.
struct Refusal {
    unsigned status = 403; ///< of HTTP
    std::string what;
};

/// One session. What it sends goes to the function that it was made with, at once and in order. Positions are
/// those of the client's audio, since the first sample. One thread.
class ServerProtocol {
  public:
    using Send = std::function<void(Outgoing)>;
    using Position = std::chrono::milliseconds;

    virtual ~ServerProtocol() = default;

    virtual VoiceProvider provider() const = 0;
    /// Rate of the audio that the client sends, Hz.
    virtual double inputRate() const = 0;

    /// Looks at the path's query, the fields and the key. None: the upgrade may go on.
    virtual std::optional<Refusal> handshake(const HttpRequest& request, std::string_view apiKey) = 0;
    /// The next message of the client. A violation is whatever is not compact JSON, misses a key, has one
    /// that is not asked for, or a value of another type or another content than the fixed ones, and what may
    /// not come at this point of the session. None when the message alone asks for nothing yet.
    virtual Checked<std::optional<ClientMessage>> receive(std::string_view text) = 0;

    /// The client is connected.
    virtual void connected() = 0;
    /// Its configuration has been accepted.
    virtual void configured() = 0;
    virtual void callerBegins(Position at) = 0;
    virtual void callerSaid(std::string_view text, Position at) = 0;
    virtual void callerEnds(Position at) = 0;
    virtual void turnBegins() = 0;
    /// 24 kHz mono.
    virtual void audio(std::span<const std::int16_t> samples) = 0;
    virtual void agentSaid(std::string_view fragment) = 0;
    /// The model has finished; it may then call `end_call` with this reason.
    virtual void turnEnds(std::optional<std::string_view> endCallReason) = 0;
    /// The caller talks over the turn, which ends here.
    virtual void interrupted() = 0;
    /// The call of the tool has been answered, and the model has nothing to add.
    virtual void toolAnswered() = 0;
};

/// The protocol that is spoken at a path; none at any other.
std::unique_ptr<ServerProtocol> makeServerProtocol(std::string_view path, ServerProtocol::Send send);

} // namespace velto::rehearsal
