// Keys in the desktop's keyring, by the freedesktop Secret Service.
#pragma once

#include "VeltoPlatform/SecretStore.h"
#include "VeltoPlatform/linux/SecretConversation.h"
#include "VeltoPlatform/TroubleReport.h"

#include <functional>
#include <mutex>

namespace velto {

/// Items of the default collection, or else of the login collection; `add` creates a default collection where
/// there is none. Operations come one after another, over one connection that stays: gnome-keyring 42 can end
/// when one client leaves in the moment in which the next one comes. Each blocks for at most the operation's
/// limit, and for a prompt's limit more when the keyring has to ask its user. Prompts are shown to unlock,
/// and where a keyring asks before it creates or deletes. One that is not answered in time stays on the
/// screen, and its answer counts whenever it comes.
///
/// `unavailable`: there is no session bus, or nobody on it keeps secrets. `locked`: a prompt was dismissed or
/// not answered; then nobody is asked again for a while, nor while the old prompt can still be answered.
/// Texts that are not UTF-8 or hold a NUL answer `failed`, except for the data, which may be any bytes.
class SecretServiceStore : public SecretStore {
  public:
    /// `report` gets one line a trouble, without a key or account, on the operation's thread.
    explicit SecretServiceStore(TroubleReport::Report report, const SecretServiceLimits& limits = {});

    bool canDescribeAccess() override { return true; }
    SecretStatus add(const SecretItem& item) override;
    SecretStatus find(const std::string& service, const std::string& account, std::string& data) override;
    SecretStatus holds(const std::string& service, const std::string& account) override;
    SecretStatus remove(const std::string& service, const std::string& account) override;
    std::string state() override;

  private:
    SecretStatus converse(const std::function<SecretStatus(SecretConversation&)>& talk);

    SecretServiceLimits limits_;
    std::mutex mutex_;
    SecretServiceLink link_;
    TroubleReport trouble_;
};

} // namespace velto
