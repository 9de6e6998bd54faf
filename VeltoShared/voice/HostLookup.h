// Name resolution that nobody has to wait for: the system's own cannot be cancelled.
#pragma once

#include "VeltoShared/voice/HostAddress.h"

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <memory>
#include <string>
#include <vector>

namespace velto {

namespace asio = boost::asio;

/// One lookup at a time, on one executor. The system's resolver runs on a thread of its own, which shares
/// nothing with this object or its executor, so that both may go while it is still waiting for a name server.
class HostLookup {
  public:
    struct Answer {
        std::vector<asio::ip::tcp::endpoint> endpoints;
        std::string failure;  ///< why there are none
        bool mayPass = false; ///< the failure is one of the network, not of the name
    };

    explicit HostLookup(const asio::any_io_executor& executor);
    ~HostLookup();

    /// The addresses in the order in which to try them. An address literal and "localhost" are
    /// answered at once.
    asio::awaitable<Answer> resolve(HostAddress address);
    /// Lets a waiting `resolve` end without endpoints.
    void cancel();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace velto
