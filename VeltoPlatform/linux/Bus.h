// One connection to a D-Bus message bus, with a time limit on everything that waits for others.
#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace velto {

struct BusMessageRelease {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageRelease>;

/// What a call brought: a reply, or the D-Bus name of an error.
struct BusReply {
    BusMessage message;
    std::string error; ///< empty with a reply

    explicit operator bool() const { return message != nullptr; }
    /// The other side, or the bus itself, did not answer in time.
    bool timedOut() const { return error == SD_BUS_ERROR_NO_REPLY || error == SD_BUS_ERROR_TIMEOUT; }
    /// Nobody of this name is on the bus, or the bus is gone.
    bool absent() const;
};

/// One thread at a time; nothing runs between the calls. Once the bus has hung up, every call fails at once.
class Bus {
  public:
    using Limit = std::chrono::microseconds;
    /// The bus itself still ends such a call, with an error: when the other side has left, and where it has a
    /// limit of its own (minutes).
    static constexpr Limit kUntilAnswered = std::chrono::hours(24 * 365);

    /// What the environment names as the user's session bus; empty when it names none.
    static std::string sessionAddress();
    /// A connection that is ready for calls: none when nobody listens, or not within the limit. `address`
    /// as D-Bus writes it ("unix:path=…"). `nobody`, when given, says whether it is sure that nobody listens
    /// there; a bus that stands still can have its queue full.
    static std::unique_ptr<Bus> open(const std::string& address, Limit limit, bool* nobody = nullptr);
    /// The same without waiting: a connection that may not be ready yet.
    static std::unique_ptr<Bus> start(const std::string& address, bool* nobody = nullptr);
    /// Waits until a started connection is ready; false when it is not within the limit.
    bool becomesReady(Limit limit);

    ~Bus();
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    bool alive() const;
    /// The other side hung up, or did not let us in; for good.
    bool closed() const;
    /// It was ready for calls once.
    bool wasReady() const { return wasReady_; }
    /// A method call that waits to be filled and sent; none when one of the names is not valid.
    BusMessage method(const char* destination, const char* path, const char* interface, const char* member);
    /// Sends and waits for the reply.
    BusReply call(const BusMessage& request, Limit limit);

    /// Sends at once and answers through `done`, from within `process`; with an error after the limit.
    /// Answers false, without calling `done`, when it could not be sent. `done` is not called any more once
    /// this object is gone.
    using Done = std::function<void(BusReply)>;
    bool send(const BusMessage& request, Limit limit, Done done);
    /// Delivers what has arrived; waits for up to `limit` when nothing has. False when nothing was
    /// delivered.
    bool process(Limit limit);

    sd_bus* handle() { return bus_; }

  private:
    explicit Bus(sd_bus* bus) : bus_(bus) {}
    /// Until something happens; false when nothing can.
    bool wait(Limit limit);

    sd_bus* bus_;
    bool refused_ = false;
    bool wasReady_ = false;
};

} // namespace velto
