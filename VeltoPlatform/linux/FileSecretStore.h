// Keys in a file, for machines without a keyring. Not encrypted: it protects against other users only.
#pragma once

#include "VeltoPlatform/SecretStore.h"
#include "VeltoPlatform/linux/JsonFile.h"
#include "VeltoPlatform/TroubleReport.h"

#include <boost/json/array.hpp>

#include <filesystem>

namespace velto {

/// One JSON file of mode 0600 in a folder of mode 0700 that holds nothing else, both made when the first key
/// is added. Whoever can read the user's files, as a backup or any program of theirs can, can read the keys.
/// Other modes are set right and reported; a folder or file that belongs to somebody else is neither read nor
/// written. A broken file is set aside as "<file>.broken" before the next change.
class FileSecretStore : public SecretStore {
  public:
    /// `report` gets one line a trouble, without a key or account; any thread.
    FileSecretStore(std::filesystem::path file, TroubleReport::Report report);

    bool canDescribeAccess() override { return false; }
    /// `failed` also for a service or account that is not UTF-8.
    SecretStatus add(const SecretItem& item) override;
    SecretStatus find(const std::string& service, const std::string& account, std::string& data) override;
    SecretStatus holds(const std::string& service, const std::string& account) override;
    /// Makes nothing where there is no file.
    SecretStatus remove(const std::string& service, const std::string& account) override;
    std::string state() override { return "file " + file_.path().string() + ", not encrypted"; }

  private:
    enum class Guard { safe, absent, unsafe };

    Guard guard();
    SecretStatus change(const std::function<SecretStatus(boost::json::array&)>& change);
    SecretStatus answer(SecretStatus status, const std::string& problem);

    TroubleReport trouble_;
    JsonFile file_;
};

} // namespace velto
