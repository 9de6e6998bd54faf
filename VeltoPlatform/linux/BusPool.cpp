// Connections to one message bus for many threads.
#include "VeltoPlatform/linux/BusPool.h"

#include <algorithm>
#include <utility>

namespace velto {
namespace {

using Clock = std::chrono::steady_clock;

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
            if (takeIn(*resting) && !bus)
                bus = std::move(resting);
        std::erase(atRest_, nullptr);
    }
    tell();
    if (gone_ || silent()) {
        if (bus)
            giveBack(std::move(bus));
        return {};
    }
    if (bus)
        return {shared_from_this(), std::move(bus)};

    bus = Bus::start(address_);
    const auto begin = Clock::now();
    if (bus && bus->becomesReady(patience_->left()))
        return {shared_from_this(), std::move(bus)};
    if (!bus || bus->closed()) {
        gone_ = true;
        return {};
    }
    // What is half open shows when the bus goes on.
    patience_->spend(std::chrono::duration_cast<BusPatience::Duration>(Clock::now() - begin));
    fellSilent();
    giveBack(std::move(bus));
    tell();
    return {};
}

bool BusPool::takeIn(Bus& bus) {
    if (!bus.alive() && bus.becomesReady(Bus::Limit::zero()))
        heard();
    while (bus.process(Bus::Limit::zero())) {
    }
    if (bus.closed())
        gone_ = true;
    return bus.alive();
}

void BusPool::giveBack(std::unique_ptr<Bus> bus) {
    if (bus->closed())
        gone_ = true;
    const std::scoped_lock lock(mutex_);
    atRest_.push_back(std::move(bus));
}

BusPeerRef BusPool::peer(const std::string& name, const std::string& title) {
    const std::scoped_lock lock(mutex_);
    auto& known = peers_[name];
    if (!known)
        known = makePeer(name, title, serial_);
    return known;
}

void BusPool::forget(const std::string& name) {
    const std::scoped_lock lock(mutex_);
    peers_.erase(name);
}

void BusPool::fellSilent(Bus& bus, const BusPeerRef& peer) {
    setSilent(*peer);
    const auto probe = bus.method(peer->name.c_str(), probe_.path, probe_.interface, probe_.member);
    if (probe)
        sd_bus_message_set_auto_start(probe.get(), 0);
    bus.send(probe, Bus::kUntilAnswered, [this, peer](const BusReply& answer) { heard(*peer, answer); });
}

void BusPool::fellSilent() {
    setSilent(*daemon_);
}

void BusPool::setSilent(BusPeer& peer) {
    if (!peer.silent.exchange(true))
        note(peer.title + " does not answer; going by what it last showed");
}

void BusPool::heard(BusPeer& peer, const BusReply& answer) {
    if (peer.silent.exchange(false) && !answer.left())
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
