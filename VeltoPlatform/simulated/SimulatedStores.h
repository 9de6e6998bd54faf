// Folders, preferences and keyring of the simulated computer, with faults that a test switches on.
#pragma once

#include "VeltoPlatform/Folders.h"
#include "VeltoPlatform/Preferences.h"
#include "VeltoPlatform/SecretStore.h"

#include <map>
#include <mutex>
#include <vector>

namespace velto {

/// Below a root folder of the test's: "Library/Application Support" and "Library/Logs".
class SimulatedFolders : public Folders {
  public:
    explicit SimulatedFolders(std::filesystem::path root) : root_(std::move(root)) {}

    std::filesystem::path applicationSupport() override { return root_ / "Library" / "Application Support"; }
    std::filesystem::path logs() override { return root_ / "Library" / "Logs"; }
    std::optional<std::filesystem::path> bundleResources() override { return resources; }
    std::filesystem::path executable() override { return started; }

    std::optional<std::filesystem::path> resources;
    std::filesystem::path started = "/opt/velto/bin/velto";

  private:
    std::filesystem::path root_;
};

/// In memory.
class SimulatedPreferences : public Preferences {
  public:
    std::optional<PreferenceValue> object(const std::string& key) override;
    void set(const std::string& key, PreferenceValue value) override;
    void remove(const std::string& key) override;

    std::string trouble() override { return {}; }
    std::size_t writes() const;

  private:
    mutable std::mutex mutex_;
    std::map<std::string, PreferenceValue> values_;
    std::size_t writes_ = 0;
};

/// In memory. Like the real one it refuses a second item of one service and account.
class SimulatedSecretStore : public SecretStore {
  public:
    bool canDescribeAccess() override { return describesAccess; }
    SecretStatus add(const SecretItem& item) override;
    SecretStatus find(const std::string& service, const std::string& account, std::string& data) override;
    SecretStatus holds(const std::string& service, const std::string& account) override;
    SecretStatus remove(const std::string& service, const std::string& account) override;
    std::string state() override { return fault == SecretStatus::unavailable ? "none" : "simulated keyring"; }

    std::vector<SecretItem> items() const;

    bool describesAccess = true;
    /// Answered by every operation instead of doing it.
    std::optional<SecretStatus> fault;
    /// Answered by `add` alone.
    std::optional<SecretStatus> addFault;

  private:
    mutable std::mutex mutex_;
    std::vector<SecretItem> items_;
};

} // namespace velto
