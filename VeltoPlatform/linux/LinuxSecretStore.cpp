#include "VeltoPlatform/linux/LinuxSecretStore.h"

namespace velto {

SecretStatus LinuxSecretStore::add(const SecretItem& item) {
    const auto status = keyring_.add(item);
    return status == SecretStatus::unavailable && fileIsAllowed() ? file_.add(item) : status;
}

SecretStatus LinuxSecretStore::find(const std::string& service, const std::string& account,
                                    std::string& data) {
    const auto status = keyring_.find(service, account, data);
    return fileCounts(status) ? file_.find(service, account, data) : status;
}

SecretStatus LinuxSecretStore::holds(const std::string& service, const std::string& account) {
    const auto status = keyring_.holds(service, account);
    return fileCounts(status) ? file_.holds(service, account) : status;
}

bool LinuxSecretStore::fileCounts(SecretStatus inKeyring) {
    return (inKeyring == SecretStatus::notFound || inKeyring == SecretStatus::unavailable) && fileIsAllowed();
}

SecretStatus LinuxSecretStore::remove(const std::string& service, const std::string& account) {
    const auto fromKeyring = keyring_.remove(service, account);
    // What the keyring may still hold must not come to light when the file's is gone.
    if (fromKeyring == SecretStatus::locked || fromKeyring == SecretStatus::failed)
        return fromKeyring;
    const auto fromFile = file_.remove(service, account);
    if (fromFile == SecretStatus::success)
        return fromFile;
    return fromKeyring == SecretStatus::unavailable && fileIsAllowed() ? fromFile : fromKeyring;
}

std::string LinuxSecretStore::state() {
    auto keyring = keyring_.state();
    return keyring == "none" && fileIsAllowed() ? file_.state() : keyring;
}

} // namespace velto
