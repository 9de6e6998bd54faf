// Calls to accessible objects, and what their answers hold. An answer of another shape holds nothing.
#pragma once

#include "VeltoPlatform/Accessibility.h"
#include "VeltoPlatform/linux/Bus.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto::AtspiCalls {

inline constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
inline constexpr const char* kAction = "org.a11y.atspi.Action";
inline constexpr const char* kRegistry = "org.a11y.atspi.Registry";
inline constexpr const char* kRoot = "/org/a11y/atspi/accessible/root";

BusMessage getRole(Bus& bus, const char* peer, const char* path);
BusMessage getState(Bus& bus, const char* peer, const char* path);
BusMessage getChildren(Bus& bus, const char* peer, const char* path);
BusMessage getExtents(Bus& bus, const char* peer, const char* path);
BusMessage getText(Bus& bus, const char* peer, const char* path);
BusMessage getActions(Bus& bus, const char* peer, const char* path);
BusMessage doAction(Bus& bus, const char* peer, const char* path, int action);
/// "Name" or "Description". One property at a time: asking for all of them crashes some toolkits.
BusMessage getProperty(Bus& bus, const char* peer, const char* path, const char* name);
BusMessage getCurrentValue(Bus& bus, const char* peer, const char* path);

std::optional<std::uint32_t> number(const BusReply& reply);
/// Bits as in `AtspiState`.
std::optional<std::uint64_t> state(const BusReply& reply);
std::optional<std::string> text(const BusReply& reply);
std::optional<std::string> textProperty(const BusReply& reply);
std::optional<double> numberProperty(const BusReply& reply);
std::optional<bool> truth(const BusReply& reply);
std::optional<bool> truthProperty(const BusReply& reply);
std::optional<ScreenPoint> point(const BusReply& reply);
/// The names of the actions, in order.
std::vector<std::string> actions(const BusReply& reply);
/// Without objects that stand for none. `each` gets views that live as long as the call.
bool children(const BusReply& reply, const std::function<void(const char* peer, const char* path)>& each);

} // namespace velto::AtspiCalls
