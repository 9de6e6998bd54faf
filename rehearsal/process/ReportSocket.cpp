// One connection for the life of the function and its copies.
#include "rehearsal/process/ReportSocket.h"

#include "VeltoPlatform/FileDescriptor.h"

#include <boost/json/serialize.hpp>

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <memory>
#include <mutex>

namespace velto::rehearsal {
namespace {

int connectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return -1;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    // Non-blocking from the start: a listener that accepts nobody must not hold up the connection either.
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor >= 0 &&
        ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return descriptor;
    FileDescriptor unused(descriptor);
    return -1;
}

struct Listener {
    explicit Listener(const std::string& path) : socket(connectTo(path)) {}

    void send(const boost::json::object& report) {
        const auto line = boost::json::serialize(report) + "\n";
        const std::lock_guard lock(mutex);
        if (socket &&
            ::send(socket.get(), line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size()))
            socket.close();
    }

    std::mutex mutex;
    FileDescriptor socket;
};

} // namespace

Report reportToSocket(const std::string& path) {
    return [listener = std::make_shared<Listener>(path)](const boost::json::object& report) {
        listener->send(report);
    };
}

} // namespace velto::rehearsal
