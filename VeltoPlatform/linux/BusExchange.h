// Many calls in flight on one connection, and an end to waiting for whoever is silent.
#pragma once

#include "VeltoPlatform/linux/BusPool.h"

#include <chrono>

namespace velto {

/// One conversation: calls are sent with `ask`, also from within the handlers of others; `finish` waits until
/// all are answered or given up. A peer that has said nothing for as long as `BusPatience` allows is given
/// up and marked silent; its late answers reach no handler. One thread.
class BusExchange {
  public:
    /// Called from within `finish`, at most once; never for a call that was given up. An error is an answer,
    /// too.
    using Handler = std::function<void(BusReply)>;
    /// Called whenever the answer comes, also long after the exchange, on whatever thread takes it in;
    /// must not use the pool.
    using Late = std::function<void()>;

    explicit BusExchange(const BusPool::Lease& lease);
    ~BusExchange();
    BusExchange(const BusExchange&) = delete;
    BusExchange& operator=(const BusExchange&) = delete;

    Bus& bus() { return bus_; }
    /// False when it was not sent; then there is no answer. So with what the peer still owes an answer to
    /// from an earlier exchange.
    bool ask(const BusPeerRef& peer, const BusMessage& request, Handler handler, Late late = {});
    void finish();
    /// Whether calls to this peer were given up, because it or the bus was silent.
    bool gaveUp(const BusPeer& peer) const;

  private:
    using Clock = std::chrono::steady_clock;
    struct Talk;
    struct Round;

    static Talk& talkWith(Round& round, const BusPeerRef& peer);
    void look();
    void askBus();
    void giveUp(Talk& talk);
    Clock::time_point endOfPatience(const Talk& talk) const;
    Clock::time_point nextLook() const;

    BusPool& pool_;
    Bus& bus_;
    std::shared_ptr<Round> round_;
    Clock::duration patience_{};
    Clock::time_point tooLong_;
};

} // namespace velto
