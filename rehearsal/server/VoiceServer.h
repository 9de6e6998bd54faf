// The voice server's socket: TLS, WebSocket, one session at a time.
#pragma once

#include "rehearsal/server/Conversation.h"

#include <boost/asio/awaitable.hpp>

#include <cstdint>
#include <string>

namespace velto::rehearsal {

struct VoiceServerOptions {
    std::string certificatePEM;
    std::string keyPEM;
    std::string apiKey; ///< what the client must bring
    Scenario scenario;
    Conversation::Voices voices;
};

/// Listens on 127.0.0.1. Everything runs on the one thread of the executor that runs `serve`. Whatever the
/// protocol does not allow is reported as {"event":"violation","what":…} and ends the connection: with a
/// refused handshake, or with close code 1007 or 1008.
class VoiceServer {
  public:
    using Report = std::function<void(boost::json::object)>;

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
