#include "VeltoPlatform/linux/SecretServiceStore.h"

namespace velto {

SecretServiceStore::SecretServiceStore(TroubleReport::Report report, const SecretServiceLimits& limits)
    : limits_(limits), trouble_("keyring", std::move(report)) {}

SecretStatus SecretServiceStore::converse(const std::function<SecretStatus(SecretConversation&)>& talk) {
    const std::lock_guard lock(mutex_);
    SecretConversation conversation(limits_, link_);
    auto status = conversation.open();
    if (status == SecretStatus::success)
        status = talk(conversation);
    // A session that the keyring may have dropped is not used again.
    if (status == SecretStatus::failed)
        link_.service.clear();
    trouble_.tell(conversation.trouble());
    return status;
}

SecretStatus SecretServiceStore::add(const SecretItem& item) {
    return converse([&](SecretConversation& talk) {
        auto status = talk.findCollection();
        if (status == SecretStatus::notFound)
            status = talk.createCollection();
        if (status == SecretStatus::success)
            status = talk.unlock();
        SecretConversation::Paths found;
        if (status == SecretStatus::success)
            status = talk.search(item.service, item.account, found);
        if (status == SecretStatus::success)
            status = found.empty() ? talk.createItem(item) : SecretStatus::duplicate;
        return status;
    });
}

SecretStatus SecretServiceStore::find(const std::string& service, const std::string& account,
                                      std::string& data) {
    return converse([&](SecretConversation& talk) {
        SecretConversation::Paths found;
        auto status = talk.findUnlocked(service, account, found);
        if (status == SecretStatus::success)
            status = talk.read(found.front(), data);
        return status;
    });
}

SecretStatus SecretServiceStore::holds(const std::string& service, const std::string& account) {
    return converse([&](SecretConversation& talk) {
        SecretConversation::Paths found;
        bool locked = false;
        auto status = talk.findCollection();
        if (status == SecretStatus::success)
            status = talk.readLocked(locked);
        if (status == SecretStatus::success)
            status = talk.search(service, account, found);
        if (status == SecretStatus::success && found.empty())
            status = locked ? SecretStatus::locked : SecretStatus::notFound;
        return status;
    });
}

SecretStatus SecretServiceStore::remove(const std::string& service, const std::string& account) {
    return converse([&](SecretConversation& talk) {
        SecretConversation::Paths found;
        auto status = talk.findUnlocked(service, account, found);
        for (auto item = found.begin(); status == SecretStatus::success && item != found.end(); ++item)
            status = talk.deleteItem(*item);
        return status;
    });
}

std::string SecretServiceStore::state() {
    const std::lock_guard lock(mutex_);
    SecretConversation talk(limits_, link_);
    auto status = talk.open();
    if (status == SecretStatus::unavailable)
        return "none";
    bool locked = false;
    if (status == SecretStatus::success)
        status = talk.findCollection();
    if (status == SecretStatus::success)
        status = talk.readLocked(locked);
    if (status == SecretStatus::failed)
        return "system keyring, not answering";
    return locked ? "system keyring, locked" : "system keyring";
}

} // namespace velto
