#include "VeltoPlatform/linux/AtspiCalls.h"

namespace velto::AtspiCalls {
namespace {

constexpr std::string_view kNone = "/org/a11y/atspi/null";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

BusMessage property(Bus& bus, const char* peer, const char* path, const char* interface, const char* name) {
    auto request = bus.method(peer, path, kProperties, "Get");
    if (request)
        sd_bus_message_append(request.get(), "ss", interface, name);
    return request;
}

template <class T>
std::optional<T> read(const BusReply& reply, const char* signature) {
    T value{};
    if (!reply || sd_bus_message_read(reply.message.get(), signature, &value) <= 0)
        return std::nullopt;
    return value;
}

template <class T>
std::optional<T> readProperty(const BusReply& reply, const char* type) {
    T value{};
    if (!reply || sd_bus_message_read(reply.message.get(), "v", type, &value) <= 0)
        return std::nullopt;
    return value;
}

} // namespace

BusMessage getRole(Bus& bus, const char* peer, const char* path) {
    return bus.method(peer, path, kAccessible, "GetRole");
}

BusMessage getState(Bus& bus, const char* peer, const char* path) {
    return bus.method(peer, path, kAccessible, "GetState");
}

BusMessage getChildren(Bus& bus, const char* peer, const char* path) {
    return bus.method(peer, path, kAccessible, "GetChildren");
}

BusMessage getExtents(Bus& bus, const char* peer, const char* path) {
    auto request = bus.method(peer, path, "org.a11y.atspi.Component", "GetExtents");
    if (request)
        sd_bus_message_append(request.get(), "u", 0); // on the screen
    return request;
}

BusMessage getText(Bus& bus, const char* peer, const char* path) {
    auto request = bus.method(peer, path, "org.a11y.atspi.Text", "GetText");
    if (request)
        sd_bus_message_append(request.get(), "ii", 0, -1);
    return request;
}

BusMessage getActions(Bus& bus, const char* peer, const char* path) {
    return bus.method(peer, path, kAction, "GetActions");
}

BusMessage doAction(Bus& bus, const char* peer, const char* path, int action) {
    auto request = bus.method(peer, path, kAction, "DoAction");
    if (request)
        sd_bus_message_append(request.get(), "i", action);
    return request;
}

BusMessage getProperty(Bus& bus, const char* peer, const char* path, const char* name) {
    return property(bus, peer, path, kAccessible, name);
}

BusMessage getCurrentValue(Bus& bus, const char* peer, const char* path) {
    return property(bus, peer, path, "org.a11y.atspi.Value", "CurrentValue");
}

std::optional<std::uint32_t> number(const BusReply& reply) {
    return read<std::uint32_t>(reply, "u");
}

std::optional<std::uint64_t> state(const BusReply& reply) {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    if (!reply || sd_bus_message_read(reply.message.get(), "au", 2, &low, &high) <= 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(high) << 32 | low;
}

std::optional<std::string> text(const BusReply& reply) {
    return read<const char*>(reply, "s");
}

std::optional<std::string> textProperty(const BusReply& reply) {
    return readProperty<const char*>(reply, "s");
}

std::optional<double> numberProperty(const BusReply& reply) {
    return readProperty<double>(reply, "d");
}

std::optional<bool> truth(const BusReply& reply) {
    const auto value = read<int>(reply, "b");
    return value ? std::optional(*value != 0) : std::nullopt;
}

std::optional<bool> truthProperty(const BusReply& reply) {
    const auto value = readProperty<int>(reply, "b");
    return value ? std::optional(*value != 0) : std::nullopt;
}

std::optional<ScreenPoint> point(const BusReply& reply) {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    if (!reply || sd_bus_message_read(reply.message.get(), "(iiii)", &x, &y, &width, &height) <= 0)
        return std::nullopt;
    return ScreenPoint{static_cast<double>(x), static_cast<double>(y)};
}

std::vector<std::string> actions(const BusReply& reply) {
    std::vector<std::string> names;
    if (!reply || sd_bus_message_enter_container(reply.message.get(), 'a', "(sss)") <= 0)
        return names;
    const char* name = nullptr;
    const char* description = nullptr;
    const char* keys = nullptr;
    while (sd_bus_message_read(reply.message.get(), "(sss)", &name, &description, &keys) > 0)
        names.emplace_back(name);
    return names;
}

bool children(const BusReply& reply, const std::function<void(const char* peer, const char* path)>& each) {
    if (!reply || sd_bus_message_enter_container(reply.message.get(), 'a', "(so)") <= 0)
        return false;
    const char* peer = nullptr;
    const char* path = nullptr;
    while (sd_bus_message_read(reply.message.get(), "(so)", &peer, &path) > 0)
        if (path != kNone)
            each(peer, path);
    return true;
}

} // namespace velto::AtspiCalls
