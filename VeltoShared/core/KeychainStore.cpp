#include "VeltoShared/core/KeychainStore.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoShared/core/Utf8.h"

namespace velto::KeychainStore {

bool set(std::string_view value, std::string_view account) {
    if (!isValidUtf8(value))
        return false;
    auto& store = *platform().secretStore;
    remove(account);
    SecretItem item{std::string(service), std::string(account), std::string(value), std::nullopt};
    if (store.canDescribeAccess())
        item.accessDescription = "Velto API key";
    return store.add(item) == SecretStatus::success;
}

std::optional<std::string> get(std::string_view account) {
    std::string data;
    const auto status = platform().secretStore->find(std::string(service), std::string(account), data);
    if (status != SecretStatus::success || !isValidUtf8(data))
        return std::nullopt;
    return data;
}

SecretStatus holds(std::string_view account) {
    return platform().secretStore->holds(std::string(service), std::string(account));
}

bool remove(std::string_view account) {
    return platform().secretStore->remove(std::string(service), std::string(account)) ==
           SecretStatus::success;
}

} // namespace velto::KeychainStore
