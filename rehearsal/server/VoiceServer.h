// The voice server's socket: TLS, HTTP/1.1, WebSocket; both providers on one port.
#pragma once

#include "rehearsal/server/ApiKeys.h"
#include "rehearsal/server/Conversation.h"
#include "rehearsal/server/WireTranscript.h"

#include <boost/asio/awaitable.hpp>

#include <memory>
#include <string>

namespace velto::rehearsal {

struct VoiceServerOptions {
    std::string certificatePEM;
    std::string keyPEM;
    ApiKeys apiKeys; ///< what clients must bring
    Scenario scenario;
    Conversation::Voices voices;
    std::shared_ptr<WireTranscript> wire{}; ///< gets what the clients send; none: nobody writes it down
};

/// Listens on 127.0.0.1. A request's path decides what is spoken: a provider's WebSocket protocol, or its
/// check of a key. Everything runs on the one thread of the executor that runs `serve`.
///
/// Reports, beside those of the conversation: {"event":"connected","provider":…},
/// {"event":"keyCheck","provider":…,"status":…}, {"event":"closed","code":…} with the conversation's
/// measures. Whatever a protocol does not allow is reported as {"event":"violation","what":…} and ends the
/// connection: with a refused request, or with close code 1007 or 1008.
class VoiceServer {
  public:
    VoiceServer(VoiceServerOptions options, Report report);
    ~VoiceServer();

    /// Binds, reports {"event":"listening","port":…}, then serves until its executor stops. Throws
    /// boost::system::system_error when the certificate or the socket cannot be used.
    boost::asio::awaitable<void> serve();

    struct Impl;

  private:
    std::unique_ptr<Impl> impl_;
};

} // namespace velto::rehearsal
