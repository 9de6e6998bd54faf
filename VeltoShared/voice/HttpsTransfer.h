// One HTTPS request of which only the answer's status matters.
#pragma once

#include <boost/asio/awaitable.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

namespace asio = boost::asio;

/// HTTP/1.1 (RFC 9112) over TLS, with the trust and the host rules of VoiceSocket and a connection of its
/// own. Redirects are not followed, proxies not used, and what a request holds is told to nobody but the
/// host.
class HttpsTransfer {
  public:
    struct Request {
        std::string host;   ///< "host" or "host:port", see HostAddress; 443 without a port
        std::string target; ///< path and query, already encoded
        std::vector<std::pair<std::string, std::string>> headers;
        std::optional<std::string> body; ///< makes the request a POST
    };

    /// The status (RFC 9110, section 15) once the whole response is there, or none: not a host, a field value
    /// that none is, no connection, an untrusted certificate, a response cut short. Runs on the executor that
    /// awaits it, which runs one thing at a time, and never blocks it. Has no limit of its own; a cancelled
    /// transfer ends at once and answers none.
    static asio::awaitable<std::optional<int>> status(Request request);

  private:
    class Connection;
};

} // namespace velto
