// Where this system keeps the user's keys: the keyring, or a file where there is none and the user says so.
#pragma once

#include "VeltoPlatform/Preferences.h"
#include "VeltoPlatform/linux/FileSecretStore.h"
#include "VeltoPlatform/linux/SecretServiceStore.h"

namespace velto {

/// The file takes part only while the preference "unencryptedKeyFile" is true, which each operation reads
/// anew: keys are added to it where no keyring can be had, and found in it when the keyring has none. A
/// locked or failing keyring is no reason to use it. `remove` takes the key from both wherever it is, also
/// from a file that is not used any more, and answers the keyring's word unless the file held the key; while
/// the keyring is locked or fails, it takes it from neither.
class LinuxSecretStore : public SecretStore {
  public:
    static constexpr const char* kFilePreference = "unencryptedKeyFile";

    /// `preferences` must outlive it. `report` gets one line a trouble, on the operation's thread.
    LinuxSecretStore(Preferences& preferences, std::filesystem::path file,
                     const TroubleReport::Report& report, const SecretServiceLimits& limits = {})
        : preferences_(preferences), keyring_(report, limits), file_(std::move(file), report) {}

    /// The file drops it.
    bool canDescribeAccess() override { return keyring_.canDescribeAccess(); }
    SecretStatus add(const SecretItem& item) override;
    SecretStatus find(const std::string& service, const std::string& account, std::string& data) override;
    SecretStatus holds(const std::string& service, const std::string& account) override;
    SecretStatus remove(const std::string& service, const std::string& account) override;
    std::string state() override;

  private:
    /// Whether the file is looked at when the keyring has answered so.
    bool fileCounts(SecretStatus inKeyring);
    bool fileIsAllowed() { return preferences_.boolean(kFilePreference); }

    Preferences& preferences_;
    SecretServiceStore keyring_;
    FileSecretStore file_;
};

} // namespace velto
