// The address of the control socket, built alike by the server and its clients.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <filesystem>

namespace velto {

/// A Unix-domain address that is the same on every system: the family, at most 103 bytes of the path (a
/// longer path is cut) and a zero.
struct ControlAddress {
    explicit ControlAddress(const std::filesystem::path& path);

    static constexpr std::size_t kLongestPath = 103;
    static constexpr socklen_t kLength = 106;

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address_); }
    /// The path as the address holds it.
    const char* path() const { return address_.sun_path; }

  private:
    sockaddr_un address_{};
};

} // namespace velto
