// Lets other programs of the same user drive the application over a Unix-domain socket.
#pragma once

#include "VeltoApp/control/ControlSocket.h"
#include "VeltoApp/control/ControlTargets.h"

#include <boost/json/object.hpp>

#include <memory>

namespace velto {

class CallHistoryStore;

/// Main thread only; commands run there against the objects that the views use. The socket is
/// AppPaths::controlSocket(), for its owner alone. It is not removed at the end: the next launch replaces it.
class ControlServer : public std::enable_shared_from_this<ControlServer> {
  public:
    /// The process's server, over the shared history; lives until the process ends.
    static const std::shared_ptr<ControlServer>& shared();
    /// `history` must outlive the server. Hold it by `std::shared_ptr`.
    explicit ControlServer(CallHistoryStore& history);
    ~ControlServer();

    /// Takes the objects to be driven, which are not kept alive, in the place of earlier ones. Opens the
    /// socket unless it is open; when that fails, it says so in the log, and a later call tries again.
    void start(std::weak_ptr<ControlledSession> session, std::weak_ptr<ControlledAgent> agent,
               std::weak_ptr<ControlledReadiness> setup);
    bool listening() const { return socket_ != nullptr; }

    /// Executes one request and answers the reply.
    boost::json::object handle(const boost::json::object& request);

  private:
    void listen();

    CallHistoryStore& history_;
    std::weak_ptr<ControlledSession> session_;
    std::weak_ptr<ControlledAgent> agent_;
    std::weak_ptr<ControlledReadiness> setup_;
    std::unique_ptr<ControlSocket> socket_;
};

} // namespace velto
