#include "VeltoPlatform/simulated/SimulatedStores.h"

#include <algorithm>

namespace velto {

std::optional<PreferenceValue> SimulatedPreferences::object(const std::string& key) {
    std::lock_guard lock(mutex_);
    const auto found = values_.find(key);
    if (found == values_.end())
        return std::nullopt;
    return found->second;
}

void SimulatedPreferences::set(const std::string& key, PreferenceValue value) {
    std::lock_guard lock(mutex_);
    values_.insert_or_assign(key, std::move(value));
    ++writes_;
}

void SimulatedPreferences::remove(const std::string& key) {
    std::lock_guard lock(mutex_);
    values_.erase(key);
    ++writes_;
}

std::size_t SimulatedPreferences::writes() const {
    std::lock_guard lock(mutex_);
    return writes_;
}

namespace {

auto same(const std::string& service, const std::string& account) {
    return [&](const SecretItem& item) { return item.service == service && item.account == account; };
}

} // namespace

SecretStatus SimulatedSecretStore::add(const SecretItem& item) {
    if (fault || addFault)
        return fault ? *fault : *addFault;
    std::lock_guard lock(mutex_);
    if (std::any_of(items_.begin(), items_.end(), same(item.service, item.account)))
        return SecretStatus::duplicate;
    items_.push_back(item);
    return SecretStatus::success;
}

SecretStatus SimulatedSecretStore::find(const std::string& service, const std::string& account,
                                        std::string& data) {
    if (fault)
        return *fault;
    std::lock_guard lock(mutex_);
    const auto found = std::find_if(items_.begin(), items_.end(), same(service, account));
    if (found == items_.end())
        return SecretStatus::notFound;
    data = found->data;
    return SecretStatus::success;
}

SecretStatus SimulatedSecretStore::holds(const std::string& service, const std::string& account) {
    std::string ignored;
    return find(service, account, ignored);
}

SecretStatus SimulatedSecretStore::remove(const std::string& service, const std::string& account) {
    if (fault)
        return *fault;
    std::lock_guard lock(mutex_);
    return std::erase_if(items_, same(service, account)) > 0 ? SecretStatus::success : SecretStatus::notFound;
}

std::vector<SecretItem> SimulatedSecretStore::items() const {
    std::lock_guard lock(mutex_);
    return items_;
}

} // namespace velto
