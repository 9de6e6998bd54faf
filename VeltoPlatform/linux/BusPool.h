// Connections to one message bus for many threads, and who on it has stopped answering.
#pragma once

#include "VeltoPlatform/linux/Bus.h"
#include "VeltoPlatform/linux/BusPatience.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace velto {

/// A program on a bus.
struct BusPeer {
    std::string name;  ///< on the bus
    std::string title; ///< for people
    std::uint64_t bus; ///< `BusPool::serial` of its bus
    /// It left calls unanswered. Whoever finds this set asks it nothing: one probe is outstanding, and its
    /// answer tells that the program goes on.
    std::atomic<bool> silent{false};

    /// Calls that were given up and are not answered yet: they are not asked again, so that a program that
    /// never answers one of them is waited for once.
    std::mutex mutex;
    std::set<std::string> owed; ///< path and member
    /// The log tells of a program that comes and goes only now and then.
    std::chrono::steady_clock::time_point told{};
    bool toldSilent = false;
};
using BusPeerRef = std::shared_ptr<BusPeer>;

/// Every thread that talks leases a connection of its own, so that none waits behind another's conversation.
/// Any thread. Once the bus has hung up, a pool stays `gone`.
class BusPool : public std::enable_shared_from_this<BusPool> {
  public:
    using Report = std::function<void(const std::string&)>;

    /// A small call that every program of interest on the bus answers as it answers all others, be it with
    /// an error.
    struct Probe {
        const char* path;
        const char* interface;
        const char* member;
    };

    /// A connection that belongs to one thread for the length of a conversation. False when there is none:
    /// the bus is gone, or silent.
    class Lease {
      public:
        Lease() = default;
        Lease(std::shared_ptr<BusPool> pool, std::unique_ptr<Bus> bus);
        Lease(Lease&&) noexcept = default;
        Lease& operator=(Lease&&) = delete;
        ~Lease();

        explicit operator bool() const { return bus_ != nullptr; }
        Bus& bus() const { return *bus_; }
        BusPool& pool() const { return *pool_; }

      private:
        std::shared_ptr<BusPool> pool_;
        std::unique_ptr<Bus> bus_;
    };

    /// `title` is the bus for people. `report` gets a line when a program stops answering and when it goes
    /// on, on the thread that noticed; it may be empty.
    /// `patience` may be shared by the pools of several buses.
    BusPool(const std::string& address, const std::string& title, const Probe& probe,
            std::shared_ptr<BusPatience> patience, Report report);

    /// First takes in what has arrived on the connections at rest. Waits for the bus's welcome only, within
    /// the patience.
    Lease lease();
    bool gone() const { return gone_; }
    /// The bus itself does not answer.
    bool silent() const { return daemon_->silent; }
    std::uint64_t serial() const { return serial_; }
    BusPatience& patience() const { return *patience_; }

    /// The bus itself, as the peer that answers "org.freedesktop.DBus".
    const BusPeerRef& daemon() const { return daemon_; }
    /// The same object for the same name as long as somebody holds it; `title` counts at the first time.
    /// Empty: the name.
    BusPeerRef peer(const std::string& name, const std::string& title = {});

    /// A peer has left calls unanswered: sends it the probe.
    void fellSilent(Bus& bus, const BusPeerRef& peer);
    /// The bus has left a question unanswered that stays outstanding.
    void fellSilent();
    /// The bus answers. From within an answer's handler, too.
    void heard() { heard(*daemon_, {}); }
    /// A line for the report.
    void note(std::string line);
    /// Reports what there is to report; not from within an answer's handler.
    void tell();

  private:
    /// True when the connection can be used.
    bool takeIn(Bus& bus);
    void probe(Bus& bus, const BusPeerRef& peer);
    void heard(BusPeer& peer, const BusReply& answer);
    void setSilent(BusPeer& peer);
    void giveBack(std::unique_ptr<Bus> bus);
    /// A connection to be, where a silent bus has none that could show that it goes on.
    void keepKnocking();

    const std::string address_;
    const Probe probe_;
    const std::shared_ptr<BusPatience> patience_;
    const Report report_;
    const std::uint64_t serial_;
    const BusPeerRef daemon_;
    std::atomic<bool> gone_{false};

    std::mutex mutex_; ///< of the two below
    std::vector<std::unique_ptr<Bus>> atRest_;
    std::map<std::string, std::weak_ptr<BusPeer>> peers_;
    std::mutex linesMutex_;
    std::vector<std::string> lines_;
};

} // namespace velto
