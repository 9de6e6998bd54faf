// One connection to a D-Bus message bus, on sd-bus.
#include "VeltoPlatform/linux/Bus.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace velto {
namespace {

using Clock = std::chrono::steady_clock;

std::uint64_t microseconds(Bus::Limit limit) {
    // 0 would mean the library's own limit of 25 s.
    return static_cast<std::uint64_t>(std::max<Bus::Limit::rep>(limit.count(), 1));
}

Bus::Limit left(Clock::time_point deadline) {
    return std::chrono::duration_cast<Bus::Limit>(deadline - Clock::now());
}

std::string environment(const char* name) {
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return value != nullptr ? value : "";
}

std::string errorName(int negativeErrno) {
    if (negativeErrno == -ETIMEDOUT)
        return SD_BUS_ERROR_TIMEOUT;
    if (negativeErrno == -ENOTCONN || negativeErrno == -ECONNRESET || negativeErrno == -ESHUTDOWN)
        return SD_BUS_ERROR_DISCONNECTED;
    return SD_BUS_ERROR_FAILED;
}

BusReply replyFrom(sd_bus_message* answer) {
    if (const auto* error = sd_bus_message_get_error(answer))
        return {nullptr, error->name != nullptr ? error->name : SD_BUS_ERROR_FAILED};
    return {BusMessage(sd_bus_message_ref(answer)), {}};
}

int deliver(sd_bus_message* answer, void* done, sd_bus_error*) {
    (*static_cast<Bus::Done*>(done))(replyFrom(answer));
    return 1;
}

void destroy(void* done) {
    delete static_cast<Bus::Done*>(done);
}

} // namespace

bool BusReply::absent() const {
    return error == SD_BUS_ERROR_SERVICE_UNKNOWN || error == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
           error == SD_BUS_ERROR_DISCONNECTED || error == SD_BUS_ERROR_NO_SERVER ||
           error.starts_with("org.freedesktop.DBus.Error.Spawn.");
}

std::string Bus::sessionAddress() {
    if (auto address = environment("DBUS_SESSION_BUS_ADDRESS"); !address.empty())
        return address;
    const auto folder = environment("XDG_RUNTIME_DIR");
    return folder.empty() ? "" : "unix:path=" + folder + "/bus";
}

std::unique_ptr<Bus> Bus::start(const std::string& address, bool* nobody) {
    if (nobody != nullptr)
        *nobody = true;
    sd_bus* raw = nullptr;
    if (address.empty() || sd_bus_new(&raw) < 0)
        return nullptr;
    std::unique_ptr<Bus> bus(new Bus(raw));
    if (sd_bus_set_address(raw, address.c_str()) < 0 || sd_bus_set_bus_client(raw, 1) < 0)
        return nullptr;
    const int started = sd_bus_start(raw);
    if (nobody != nullptr)
        *nobody = started < 0 && started != -EAGAIN;
    if (started < 0)
        return nullptr;
    return bus;
}

std::unique_ptr<Bus> Bus::open(const std::string& address, Limit limit, bool* nobody) {
    auto bus = start(address, nobody);
    if (!bus || bus->becomesReady(limit))
        return bus;
    if (nobody != nullptr)
        *nobody = bus->closed();
    return nullptr;
}

bool Bus::becomesReady(Limit limit) {
    // A call would wait for the bus's welcome without any limit.
    const auto deadline = Clock::now() + limit;
    while (sd_bus_is_ready(bus_) == 0) {
        const int processed = sd_bus_process(bus_, nullptr);
        refused_ = processed < 0;
        if (refused_ || (processed == 0 && Clock::now() >= deadline))
            return false;
        if (processed == 0 && !wait(left(deadline)))
            return false;
    }
    wasReady_ = alive();
    return wasReady_;
}

bool Bus::wait(Limit limit) {
    const int result = sd_bus_wait(bus_, microseconds(limit));
    return result >= 0 || result == -EINTR;
}

Bus::~Bus() {
    // Without flushing: that would wait for a bus that does not read.
    sd_bus_close_unref(bus_);
}

bool Bus::alive() const {
    return sd_bus_is_ready(bus_) > 0;
}

bool Bus::closed() const {
    return refused_ || sd_bus_is_open(bus_) <= 0;
}

BusMessage Bus::method(const char* destination, const char* path, const char* interface, const char* member) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(bus_, &message, destination, path, interface, member);
    return BusMessage(message);
}

BusReply Bus::call(const BusMessage& request, Limit limit) {
    if (!request)
        return {nullptr, SD_BUS_ERROR_INVALID_ARGS};
    if (!alive())
        return {nullptr, SD_BUS_ERROR_DISCONNECTED};
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* answer = nullptr;
    const int result = sd_bus_call(bus_, request.get(), microseconds(limit), &error, &answer);
    BusReply reply;
    if (result >= 0)
        reply.message.reset(answer);
    else
        reply.error = error.name != nullptr ? error.name : errorName(result);
    sd_bus_error_free(&error);
    return reply;
}

bool Bus::send(const BusMessage& request, Limit limit, Done done) {
    if (!request || !alive())
        return false;
    auto owned = std::make_unique<Done>(std::move(done));
    sd_bus_slot* slot = nullptr;
    if (sd_bus_call_async(bus_, &slot, request.get(), deliver, owned.get(), microseconds(limit)) < 0)
        return false;
    sd_bus_slot_set_destroy_callback(slot, destroy);
    owned.release(); // NOLINT(bugprone-unused-return-value): the slot owns it
    // The bus keeps a floating slot until its answer was delivered.
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
    return true;
}

bool Bus::process(Limit limit) {
    const auto deadline = Clock::now() + limit;
    while (alive()) {
        const int processed = sd_bus_process(bus_, nullptr);
        if (processed != 0)
            return processed > 0;
        const auto rest = left(deadline);
        if (rest <= Limit::zero() || !wait(rest))
            return false;
    }
    return false;
}

} // namespace velto
