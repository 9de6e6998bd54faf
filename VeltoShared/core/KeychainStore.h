// The user's API keys, one generic-password item an account in the platform's secret store. Values are kept
// and answered as they are; callers trim them. No state in memory; any thread; nothing is logged.
#pragma once

#include "VeltoPlatform/SecretStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace velto::KeychainStore {

inline constexpr std::string_view service = "org.velto.Velto.api-keys";

/// Replaces by deleting and adding. False when the value is not UTF-8 or the item was not stored; a failed
/// add after the deletion leaves the account empty.
bool set(std::string_view value, std::string_view account);
/// None without an item, on any failure, and for bytes that are not UTF-8.
std::optional<std::string> get(std::string_view account);
/// Whether there is an item, without reading it; nobody is asked anything.
SecretStatus holds(std::string_view account);
/// True exactly when an item was deleted.
bool remove(std::string_view account);

} // namespace velto::KeychainStore
