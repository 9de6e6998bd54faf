#include "velto-admin-helper/CommandServer.h"

#include "VeltoPlatform/linux/AdminProtocol.h"
#include "velto-admin-helper/RunningCommand.h"

#include <poll.h>
#include <sys/socket.h>
#include <syslog.h>

#include <array>
#include <cerrno>
#include <optional>

namespace velto {
namespace {

namespace Protocol = AdminProtocol;

class Server {
  public:
    Server(int socket, std::string user) : socket_(socket), user_(std::move(user)) {}

    void serve() {
        if (!send(message(Protocol::kHello, Protocol::kVersion), 0))
            return;
        for (auto request = receive(); request; request = receive()) {
            if (request->front() == Protocol::kQuiet)
                continue; // the command had ended before it came
            if (request->front() != Protocol::kRun || !run(request->substr(1)))
                return;
        }
    }

  private:
    static std::string message(char kind, std::string_view text) { return std::string(1, kind).append(text); }

    /// False when it was not sent, also when `flags` forbid to wait for room.
    bool send(const std::string& bytes, int flags) {
        ssize_t sent = 0;
        do
            sent = ::send(socket_, bytes.data(), bytes.size(), flags | MSG_NOSIGNAL);
        while (sent < 0 && errno == EINTR);
        return sent >= 0;
    }

    /// None when the other side has hung up or broken the protocol.
    std::optional<std::string> receive() {
        std::string bytes(Protocol::kLongestMessage, '\0');
        ssize_t count = 0;
        do
            count = ::recv(socket_, bytes.data(), bytes.size(), MSG_TRUNC);
        while (count < 0 && errno == EINTR);
        if (count <= 0 || static_cast<std::size_t>(count) > bytes.size())
            return std::nullopt;
        bytes.resize(static_cast<std::size_t>(count));
        return bytes;
    }

    /// False when the other side has hung up or broken the protocol.
    bool run(const std::string& line) {
        if (line.find('\0') != line.npos)
            return false;
        ::syslog(LOG_AUTHPRIV | LOG_NOTICE, "user %s runs as root: %s", user_.c_str(), line.c_str());
        RunningCommand command;
        if (const auto error = command.start(line, user_))
            return send(message(Protocol::kOutput, "/bin/sh: " + error.message() + "\n"), 0) &&
                   send(message(Protocol::kEnd, "127"), 0);
        return passOn(command) && send(message(Protocol::kEnd, std::to_string(command.wait())), 0);
    }

    bool passOn(RunningCommand& command) {
        std::string waiting; // a message that there was no room for
        bool quiet = false;
        while (!command.drained() || !waiting.empty()) {
            std::array<pollfd, 3> events{
                {{socket_, static_cast<short>(waiting.empty() ? POLLIN : POLLIN | POLLOUT), 0},
                 {waiting.empty() ? command.output() : -1, POLLIN, 0},
                 {command.exitDescriptor(), POLLIN, 0}}};
            if (::poll(events.data(), events.size(), -1) < 0) {
                if (errno != EINTR)
                    return false;
                continue;
            }
            if ((events[0].revents & ~POLLOUT) != 0) {
                const auto request = receive();
                if (!request || request->front() != Protocol::kQuiet)
                    return false;
                quiet = true;
                waiting.clear();
            }
            if (events[2].revents != 0)
                command.ended();
            if (waiting.empty() && !command.drained()) {
                const auto bytes = command.read(Protocol::kLongestOutput);
                if (!bytes.empty() && !quiet)
                    waiting = message(Protocol::kOutput, bytes);
            }
            if (!waiting.empty()) {
                if (send(waiting, MSG_DONTWAIT))
                    waiting.clear();
                else if (errno != EAGAIN)
                    return false;
            }
        }
        return true;
    }

    int socket_;
    std::string user_;
};

} // namespace

void serveCommands(int socket, const std::string& user) {
    Server(socket, user).serve();
}

} // namespace velto
