// The operating system's store of secrets: generic-password items by service and account.
#pragma once

#include <optional>
#include <string>

namespace velto {

struct SecretItem {
    std::string service;
    std::string account;
    std::string data; ///< bytes
    /// What the platform shows when it asks whether a program may read the item; none: the platform's
    /// default.
    std::optional<std::string> accessDescription;
};

enum class SecretStatus {
    success,
    notFound,
    duplicate,   ///< an item of this service and account exists
    locked,      ///< the store is locked and was not unlocked in time
    unavailable, ///< there is no such store
    failed,
};

/// All operations: any thread, synchronous. No operation logs or describes a secret.
class SecretStore {
  public:
    virtual ~SecretStore() = default;

    /// Whether items can carry an access description on this platform.
    virtual bool canDescribeAccess() = 0;
    virtual SecretStatus add(const SecretItem& item) = 0;
    /// `data` is set on success only.
    virtual SecretStatus find(const std::string& service, const std::string& account, std::string& data) = 0;
    /// Whether there is such an item, without reading it. Never prompts; `locked` when a locked store shows
    /// none.
    virtual SecretStatus holds(const std::string& service, const std::string& account) = 0;
    virtual SecretStatus remove(const std::string& service, const std::string& account) = 0;
    /// Where keys are kept, for people to read; "none" where there is no store. Never prompts.
    virtual std::string state() = 0;
};

} // namespace velto
