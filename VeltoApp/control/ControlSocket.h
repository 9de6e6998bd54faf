// The wire of the control socket: one line with a JSON object in, one line with a JSON object out.
#pragma once

#include <boost/json/object.hpp>

#include <cstddef>
#include <functional>
#include <memory>

namespace velto {

/// Serves connections until it is destroyed. Accepting, reading, parsing and writing are coroutines on
/// `Background`; only the handler runs on the main thread, so no client can hold that up.
///
/// A request ends with a line feed or with the end of the client's sending. What is no single JSON object, is
/// nested deeper than 512 levels, is longer than 16 MiB or would make all requests under way longer than 64
/// MiB is answered with "bad request"; a request that is too long is answered at once, and the rest of it
/// discarded. A silent client may stay for as long as it likes, and costs one descriptor and about a
/// kilobyte. When there are nearly as many connections as the process may have open files, the oldest is
/// closed for the newest, so that the application keeps descriptors for its own needs.
class ControlSocket {
  public:
    /// Runs on the main thread.
    using Handler = std::function<boost::json::object(const boost::json::object& request)>;

    struct Limits {
        std::size_t request = 16u << 20u;     ///< bytes
        std::size_t allRequests = 64u << 20u; ///< bytes
        std::size_t connections = 1024;
    };

    /// `listener` is a listening, non-blocking descriptor and becomes the socket's own. To be made and
    /// destroyed while `Background` runs.
    ControlSocket(int listener, Handler handler, Limits limits);
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

  private:
    class Server;
    std::shared_ptr<Server> server_;
};

} // namespace velto
