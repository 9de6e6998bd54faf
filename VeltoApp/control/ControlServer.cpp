// Joins the socket, the commands and the objects that they drive.
#include "VeltoApp/control/ControlServer.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoApp/control/ControlCommands.h"
#include "VeltoApp/control/ControlListener.h"
#include "VeltoApp/history/CallHistoryStore.h"
#include "VeltoShared/core/AppPaths.h"

#include <algorithm>

namespace velto {
namespace {

/// Descriptors that clients cannot take: the sound server's, the voice session's, files.
constexpr std::size_t kDescriptorsKept = 256;

} // namespace

const std::shared_ptr<ControlServer>& ControlServer::shared() {
    // Never destroyed: at the process's end the threads that it would post to are gone.
    static const auto* server =
        new std::shared_ptr<ControlServer>(std::make_shared<ControlServer>(CallHistoryStore::shared()));
    return *server;
}

ControlServer::ControlServer(CallHistoryStore& history) : history_(history) {}

ControlServer::~ControlServer() = default;

void ControlServer::start(std::weak_ptr<ControlledSession> session, std::weak_ptr<ControlledAgent> agent,
                          std::weak_ptr<ControlledReadiness> setup) {
    session_ = std::move(session);
    agent_ = std::move(agent);
    setup_ = std::move(setup);
    if (!listening())
        listen();
}

void ControlServer::listen() {
    const auto path = AppPaths::controlSocket();
    const auto descriptors = ControlListener::raiseDescriptorLimit();
    const auto listener = ControlListener::open(path);
    if (!listener) {
        Helper::log(listener.error().description);
        return;
    }
    ControlSocket::Limits limits;
    limits.connections = std::max(descriptors, 2 * kDescriptorsKept) - kDescriptorsKept;
    socket_ = std::make_unique<ControlSocket>(
        *listener,
        [weak = weak_from_this()](const boost::json::object& request) {
            const auto server = weak.lock();
            return server ? server->handle(request) : ControlCommands::failure("server unavailable");
        },
        limits);
    Helper::log("control: listening at " + path.string());
}

boost::json::object ControlServer::handle(const boost::json::object& request) {
    const ControlTargets targets{session_.lock(), agent_.lock(), setup_.lock()};
    return ControlCommands::handle(request, targets, history_.records());
}

} // namespace velto
