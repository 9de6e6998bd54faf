// Connections to one message bus for many threads.
#include "VeltoPlatform/linux/BusPool.h"

#include <algorithm>
#include <utility>

namespace velto {
namespace {

using Clock = std::chrono::steady_clock;

/// Between two lines on one program that comes and goes.
constexpr auto kBetweenLines = std::chrono::seconds(10);

std::uint64_t nextSerial() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

BusPeerRef makePeer(const std::string& name, const std::string& title, std::uint64_t bus) {
    auto made = std::make_shared<BusPeer>();
    made->name = name;
    made->title = title.empty() ? name : title;
    made->bus = bus;
    return made;
}

} // namespace

BusPool::Lease::Lease(std::shared_ptr<BusPool> pool, std::unique_ptr<Bus> bus)
    : pool_(std::move(pool)), bus_(std::move(bus)) {}

BusPool::Lease::~Lease() {
    if (bus_)
        pool_->giveBack(std::move(bus_));
}

BusPool::BusPool(const std::string& address, const std::string& title, const Probe& probe,
                 std::shared_ptr<BusPatience> patience, Report report)
    : address_(address), probe_(probe), patience_(std::move(patience)), report_(std::move(report)),
      serial_(nextSerial()), daemon_(makePeer("org.freedesktop.DBus", title, serial_)) {}

BusPool::Lease BusPool::lease() {
    std::unique_ptr<Bus> bus;
    if (!gone_) {
        const std::scoped_lock lock(mutex_);
        for (auto& resting : atRest_)
            if (takeIn(*resting)) {
                if (!bus)
                    bus = std::move(resting);
            } else if (resting->closed()) {
                resting.reset();
            }
        std::erase(atRest_, nullptr);
    }
    tell();
    if (gone_ || silent()) {
        if (bus)
            giveBack(std::move(bus));
        else if (!gone_)
            keepKnocking();
        return {};
    }
    if (bus)
        return {shared_from_this(), std::move(bus)};

    bool nobody = false;
    bus = Bus::start(address_, &nobody);
    const auto begin = Clock::now();
    if (bus && bus->becomesReady(patience_->left()))
        return {shared_from_this(), std::move(bus)};
    if (nobody || (bus && bus->closed())) {
        gone_ = true;
        return {};
    }
    // What is half open shows when the bus goes on.
    patience_->spend(std::chrono::duration_cast<BusPatience::Duration>(Clock::now() - begin));
    fellSilent();
    if (bus)
        giveBack(std::move(bus));
    tell();
    return {};
}

void BusPool::keepKnocking() {
    const std::scoped_lock lock(mutex_);
    if (!atRest_.empty())
        return;
    bool nobody = false;
    if (auto bus = Bus::start(address_, &nobody))
        atRest_.push_back(std::move(bus));
    if (nobody)
        gone_ = true;
}

bool BusPool::takeIn(Bus& bus) {
    if (!bus.alive() && bus.becomesReady(Bus::Limit::zero()))
        heard();
    while (bus.process(Bus::Limit::zero())) {
    }
    // One that was never let in says nothing of the others: the library gives up on it after a while.
    if (bus.closed() && bus.wasReady())
        gone_ = true;
    return bus.alive();
}

void BusPool::giveBack(std::unique_ptr<Bus> bus) {
    if (bus->closed()) {
        if (bus->wasReady())
            gone_ = true;
        return;
    }
    const std::scoped_lock lock(mutex_);
    atRest_.push_back(std::move(bus));
}

BusPeerRef BusPool::peer(const std::string& name, const std::string& title) {
    const std::scoped_lock lock(mutex_);
    if (auto known = peers_[name].lock())
        return known;
    std::erase_if(peers_, [](const auto& entry) { return entry.second.expired(); });
    auto made = makePeer(name, title, serial_);
    peers_[name] = made;
    return made;
}

void BusPool::fellSilent(Bus& bus, const BusPeerRef& peer) {
    setSilent(*peer);
    probe(bus, peer);
}

void BusPool::fellSilent() {
    setSilent(*daemon_);
}

void BusPool::probe(Bus& bus, const BusPeerRef& peer) {
    const auto request = bus.method(peer->name.c_str(), probe_.path, probe_.interface, probe_.member);
    if (request)
        sd_bus_message_set_auto_start(request.get(), 0);
    bus.send(request, Bus::kUntilAnswered, [this, &bus, peer](const BusReply& answer) {
        // The bus has lost patience, or the program has just left: asked once more, the bus says which.
        if (answer.timedOut())
            probe(bus, peer);
        else
            heard(*peer, answer);
    });
}

void BusPool::setSilent(BusPeer& peer) {
    if (peer.silent.exchange(true))
        return;
    {
        const std::scoped_lock lock(peer.mutex);
        peer.toldSilent = Clock::now() - peer.told > kBetweenLines;
        if (!peer.toldSilent)
            return;
        peer.told = Clock::now();
    }
    note(peer.title + " does not answer; going by what it last showed");
}

void BusPool::heard(BusPeer& peer, const BusReply& answer) {
    if (!peer.silent.exchange(false) || answer.absent())
        return;
    {
        const std::scoped_lock lock(peer.mutex);
        if (!std::exchange(peer.toldSilent, false))
            return;
    }
    note(peer.title + " answers again");
}

void BusPool::note(std::string line) {
    const std::scoped_lock lock(linesMutex_);
    lines_.push_back(std::move(line));
}

void BusPool::tell() {
    std::vector<std::string> lines;
    {
        const std::scoped_lock lock(linesMutex_);
        lines.swap(lines_);
    }
    if (report_)
        for (const auto& line : lines)
            report_(line);
}

} // namespace velto
