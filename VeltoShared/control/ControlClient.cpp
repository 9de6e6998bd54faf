// One blocking connection: send a line, read a line.
#include "VeltoShared/control/ControlClient.h"

#include "VeltoShared/control/ControlAddress.h"
#include "VeltoShared/core/AppPaths.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>

namespace velto::ControlClient {
namespace {

namespace json = boost::json;

constexpr std::size_t kChunk = 1'048'576;

class Connection {
  public:
    Connection() : fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}
    ~Connection() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool open(const ControlAddress& address) const {
        return fd_ >= 0 && ::connect(fd_, address.get(), ControlAddress::kLength) == 0;
    }

    std::optional<pid_t> listener() const {
        ucred peer{};
        socklen_t size = sizeof peer;
        if (::getsockopt(fd_, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.uid != ::geteuid())
            return std::nullopt;
        return peer.pid;
    }

    /// The server may answer before it has read everything, so a failure here is none yet.
    void send(std::string_view bytes) const {
        while (!bytes.empty()) {
            const auto sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent < 0 && errno == EINTR)
                continue;
            if (sent <= 0)
                return;
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        }
    }

    std::string receiveLine() const {
        const auto chunk = std::make_unique_for_overwrite<char[]>(kChunk);
        std::string line;
        while (line.empty() || line.back() != '\n') {
            const auto count = ::read(fd_, chunk.get(), kChunk);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                break;
            line.append(chunk.get(), static_cast<std::size_t>(count));
        }
        return line;
    }

  private:
    int fd_;
};

} // namespace

std::optional<json::object> request(const json::object& request) {
    const Connection connection;
    if (!connection.open(ControlAddress(AppPaths::controlSocketToReach())))
        return std::nullopt;
    connection.send(json::serialize(request) + '\n');
    const auto line = connection.receiveLine();
    json::error_code error;
    auto reply = json::parse(line, error);
    if (error || !reply.is_object())
        return std::nullopt;
    return std::move(reply.get_object());
}

bool somebodyListens() {
    return Connection().open(ControlAddress(AppPaths::controlSocketToReach()));
}

std::optional<pid_t> applicationProcess() {
    const Connection connection;
    if (!connection.open(ControlAddress(AppPaths::controlSocketToReach())))
        return std::nullopt;
    return connection.listener();
}

bool appIsRunning() {
    const auto reply = request({{"cmd", "ping"}});
    const auto* ok = reply ? reply->if_contains("ok") : nullptr;
    return ok && ok->is_bool() && ok->get_bool();
}

} // namespace velto::ControlClient
