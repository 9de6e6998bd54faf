// Calls stay outstanding on the connection after they were given up, and are answered before the probe that
// follows them: a program counts as awake once it has worked off what it owes.
#include "VeltoPlatform/linux/BusExchange.h"

#include <algorithm>
#include <deque>
#include <set>
#include <utility>

namespace velto {
namespace {

/// A peer that answers, but so slowly that one conversation takes longer than this, is as good as silent.
constexpr auto kLongestTalk = std::chrono::seconds(2);

/// The handler must not keep the call itself, which keeps the bus.
std::shared_ptr<const std::string> nameOf(sd_bus_message* call) {
    return std::make_shared<const std::string>(std::string(sd_bus_message_get_path(call)) + ' ' +
                                               sd_bus_message_get_member(call));
}

bool owes(BusPeer& peer, const std::string& call) {
    const std::scoped_lock lock(peer.mutex);
    return peer.owed.contains(call);
}

} // namespace

struct BusExchange::Talk {
    BusPeerRef peer;
    std::set<const std::string*> open{}; ///< the calls that it waits for; their handlers keep the names
    bool givenUp = false;
    Clock::time_point begun{};
    Clock::time_point heard{}; ///< or since when it owes an answer
};

struct BusExchange::Round {
    std::deque<Talk> talks; ///< the addresses of its elements stay
    Talk* bus = nullptr;    ///< with the bus itself
    std::size_t waiting = 0;
    bool busAsked = false;
    bool busSilent = false;
};

BusExchange::BusExchange(const BusPool::Lease& lease)
    : pool_(lease.pool()), bus_(lease.bus()), round_(std::make_shared<Round>()),
      tooLong_(Clock::now() + kLongestTalk) {
    round_->bus = &talkWith(*round_, pool_.daemon());
}

BusExchange::~BusExchange() {
    pool_.tell();
}

BusExchange::Talk& BusExchange::talkWith(Round& round, const BusPeerRef& peer) {
    // A conversation has one or two sides.
    for (auto& talk : round.talks)
        if (talk.peer == peer)
            return talk;
    round.talks.push_back({.peer = peer, .begun = Clock::now()});
    return round.talks.back();
}

bool BusExchange::ask(const BusPeerRef& peer, const BusMessage& request, Handler handler, Late late) {
    auto& talk = talkWith(*round_, peer);
    if (talk.givenUp || !request)
        return false;
    const auto call = nameOf(request.get());
    if (owes(*peer, *call))
        return false;
    auto answered = [weak = std::weak_ptr(round_), talk = &talk, peer, call, handler = std::move(handler),
                     late = std::move(late)](BusReply reply) {
        if (late)
            late();
        const auto round = weak.lock();
        if (!round || talk->givenUp || round->busSilent) {
            const std::scoped_lock lock(peer->mutex);
            peer->owed.erase(*call);
            return;
        }
        talk->open.erase(call.get());
        --round->waiting;
        talk->heard = Clock::now();
        if (handler)
            handler(std::move(reply));
    };
    if (!bus_.send(request, Bus::kUntilAnswered, std::move(answered)))
        return false;
    if (talk.open.empty())
        talk.heard = Clock::now();
    talk.open.insert(call.get());
    ++round_->waiting;
    return true;
}

void BusExchange::finish() {
    patience_ = pool_.patience().left();
    while (round_->waiting > 0 && !round_->busSilent && bus_.alive()) {
        const auto wait = std::chrono::duration_cast<Bus::Limit>(nextLook() - Clock::now());
        // Only where nothing has arrived was anybody silent: it may be this process that was held up.
        if (!bus_.process(std::max(wait, Bus::Limit::zero())) || Clock::now() >= tooLong_)
            look();
    }
}

BusExchange::Clock::time_point BusExchange::endOfPatience(const Talk& talk) const {
    const auto& bus = *round_->bus;
    // The bus was asked when half of the patience was gone, and gets the other half.
    return !bus.open.empty() ? std::max(talk.heard + patience_, bus.heard + patience_ / 2)
                             : talk.heard + patience_;
}

BusExchange::Clock::time_point BusExchange::nextLook() const {
    auto next = Clock::time_point::max();
    for (const auto& talk : round_->talks)
        if (!talk.open.empty())
            next = std::min(next, round_->busAsked ? endOfPatience(talk) : talk.heard + patience_ / 2);
    // A wait that is rounded down must not make the loop spin.
    return next + std::chrono::milliseconds(1);
}

void BusExchange::look() {
    const auto now = Clock::now();
    for (auto& talk : round_->talks) {
        if (talk.open.empty())
            continue;
        if (now - talk.begun > kLongestTalk && now < talk.heard + patience_ / 2) {
            giveUp(talk);
        } else if (now >= talk.heard + patience_ / 2 && !round_->busAsked) {
            askBus();
        } else if (round_->busAsked && now >= endOfPatience(talk)) {
            pool_.patience().spend(std::chrono::duration_cast<BusPatience::Duration>(now - talk.heard));
            if (round_->bus->open.empty()) {
                giveUp(talk);
                continue;
            }
            // Nobody can be heard through a bus that stands still.
            round_->busSilent = true;
            pool_.fellSilent();
            return;
        }
    }
}

void BusExchange::askBus() {
    round_->busAsked = true;
    const auto& daemon = pool_.daemon();
    ask(daemon, bus_.method(daemon->name.c_str(), "/org/freedesktop/DBus", daemon->name.c_str(), "GetId"), {},
        [pool = &pool_] { pool->heard(); });
}

void BusExchange::giveUp(Talk& talk) {
    talk.givenUp = true;
    {
        const std::scoped_lock lock(talk.peer->mutex);
        for (const auto* const call : talk.open)
            talk.peer->owed.insert(*call);
    }
    round_->waiting -= talk.open.size();
    talk.open.clear();
    pool_.fellSilent(bus_, talk.peer);
}

bool BusExchange::gaveUp(const BusPeer& peer) const {
    return std::any_of(round_->talks.begin(), round_->talks.end(), [&](const Talk& talk) {
        return talk.peer.get() == &peer && (talk.givenUp || (round_->busSilent && !talk.open.empty()));
    });
}

} // namespace velto
