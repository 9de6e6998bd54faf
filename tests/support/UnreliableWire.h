// A bad network between a client and a server on this computer: it delays, holds and cuts.
#pragma once

#include "VeltoPlatform/FileDescriptor.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace velto::test {

/// Listens on 127.0.0.1 and carries the bytes of one TCP connection at a time to a port of this computer and
/// back, on a thread of its own. The settings: any thread, at any time.
class UnreliableWire {
  public:
    explicit UnreliableWire(std::uint16_t serverPort);
    ~UnreliableWire();
    UnreliableWire(const UnreliableWire&) = delete;
    UnreliableWire& operator=(const UnreliableWire&) = delete;

    /// "localhost:port".
    std::string host() const { return "localhost:" + std::to_string(port_); }

    /// Nothing gets through, in either direction, until `release`; the connection stays open.
    void hold();
    void release();
    /// Lets so many more bytes through to the client, then resets both connections.
    void resetAfter(std::size_t bytes) { untilReset_ = static_cast<std::ptrdiff_t>(bytes); }

  private:
    void run();
    /// Until either side has gone.
    void carry(int client, int server);
    bool passToClient(int client, int server);
    bool passToServer(int client, int server);
    static bool write(int to, std::string_view bytes);
    void wake();

    std::uint16_t serverPort_;
    std::uint16_t port_ = 0;
    FileDescriptor listener_;
    FileDescriptor wake_;
    std::atomic<bool> isHeld_ = false;
    std::atomic<std::ptrdiff_t> untilReset_ = -1; ///< none below zero
    std::mutex mutex_;
    bool hasEnded_ = false;
    std::array<int, 2> open_{-1, -1}; ///< the two connections, for the end to wake a blocked write
    std::thread thread_;
};

} // namespace velto::test
